#include "json/json.h"

#include <gtest/gtest.h>

namespace quil {
namespace {

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

}  // namespace
}  // namespace quil
