#include "json/json.h"

#include <gtest/gtest.h>

namespace quil {
namespace {

TEST(Json, IntegersHoweverTheyAreSpelled) {
    struct Case {
        const char* text;
        std::optional<std::int64_t> value;
    };
    const Case cases[] = {
        {"7", 7},
        {"7.0", 7},
        {"7e2", 700},
        {"-0.0", 0},
        {"9223372036854775807", INT64_MAX},
        {"-9223372036854775808", INT64_MIN},
        {"9223372036854775808", {}},
        {"-9223372036854775809", {}},
        {"1e19", {}},
        {"1e999", {}},
        {"-1e999", {}},
        {"7.5", {}},
        {"true", {}},
        {"\"7\"", {}},
        {"null", {}},
    };
    for (const Case& c : cases) {
        const auto json = parseJson(std::string("{\"n\": ") + c.text + "}");
        ASSERT_TRUE(json) << c.text;
        EXPECT_EQ(jsonInteger((*json)["n"]), c.value) << c.text;
    }
}

TEST(Json, OverflowingNumbersAreStillJson) {
    const auto json =
        parseJson(R"({"a": [1e999, -2E+400, 1e-999, 0.1e400], "s": "1e999 \" 1e999", "b": 2})");
    ASSERT_TRUE(json);
    EXPECT_GT((*json)["a"][0].get<double>(), 1e308);
    EXPECT_LT((*json)["a"][1].get<double>(), -1e308);
    EXPECT_EQ((*json)["a"][2].get<double>(), 0);
    EXPECT_GT((*json)["a"][3].get<double>(), 1e308);
    EXPECT_EQ((*json)["s"], "1e999 \" 1e999");
    EXPECT_EQ((*json)["b"], 2);
}

TEST(Json, HalvesOfCharactersBecomeTheReplacementCharacter) {
    const auto json =
        parseJson(R"(["\ud83c", "\uDF88x", "\ud83c\udf88", "\ud83c\ud83c\udf88", "\\ud83c"])");
    ASSERT_TRUE(json);
    EXPECT_EQ(*json, (Json{"\uFFFD", "\uFFFDx", "🎈", "\uFFFD🎈", "\\ud83c"}));
}

TEST(Json, RefusesWhatIsNotJson) {
    for (const char* text :
         {"", "  ", "{", "{} {}", "{\"a\":1e999", "[1e999e1]", "[01e999]", "[1.e999]", "// x\n{}",
          "{'a':1}", "{\"a\":\"\xff\"}", "{\"a\":\"\x01\"}", "\"1e999"}) {
        EXPECT_FALSE(parseJson(text)) << text;
    }
    EXPECT_FALSE(parseJson(std::string_view("{\"a\0\":1}", 8)));
}

TEST(Json, DeepNestingNeitherCrashesNorSlowsDown) {
    const std::size_t depth = 200000;
    const std::string deep = std::string(depth, '[') + std::string(depth, ']');
    EXPECT_TRUE(parseJson(deep));
    EXPECT_FALSE(parseJson(deep.substr(0, depth)));
}

}  // namespace
}  // namespace quil
