#include "text/characters.h"

#include <gtest/gtest.h>

namespace quil {
namespace {

TEST(Characters, CountsWhatAUserPerceives) {
    const struct {
        const char* what;
        std::string text;
        std::int64_t characters;
    } cases[] = {
        {"empty", "", 0},
        {"ASCII", "Save as", 7},
        {"line breaks", "a\r\nb\nc\r", 6},
        {"carriage return and line feed beside other text", "é\r\né", 3},
        {"combining mark", "e\u0301x", 2},
        {"flags", "\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7", 2},
        {"skin tone", "\U0001F44D\U0001F3FD", 1},
        {"joined family", "\U0001F468\u200D\U0001F469\u200D\U0001F467", 1},
        {"Hangul syllable from letters", "\u1112\u1161\u11AB", 1},
        {"Hangul syllables", "한글", 2},
        {"bytes that are not UTF-8", "a\xff\xfe", 3},
        {"cut sequence", "\xf0\x9f\x91", 3},
    };
    for (const auto& [what, text, characters] : cases) {
        EXPECT_EQ(characterCount(text), characters) << what;
        EXPECT_EQ(characterPrefix(text, characters), text) << what;
        EXPECT_EQ(characterPrefix(text + "|" + text, characters), text) << what;
    }
    EXPECT_EQ(characterPrefix("abc", -5), "");
    EXPECT_EQ(characterPrefix("abc", INT64_MAX), "abc");
}

TEST(Characters, Utf16RoundTripAndRepair) {
    const std::string text = "aß€\U0001F600";
    EXPECT_EQ(toUtf16(text), u"aß€\U0001F600");
    EXPECT_EQ(toUtf8(toUtf16(text)), text);
    EXPECT_EQ(toUtf8(std::u16string{0xD83D, u'a', 0xDE00}), "\uFFFDa\uFFFD");
    EXPECT_EQ(validUtf8("ok\xc3(\xed\xa0\x80"), "ok\uFFFD(\uFFFD\uFFFD\uFFFD");
}

}  // namespace
}  // namespace quil
