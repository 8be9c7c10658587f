#include "input/key_combination.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quil {
namespace {

TEST(KeyCombination, KnowsTheKeysOfTheTableByName) {
    // By code from 0 on; "." where the table has no key, "dot" for the key of that name.
    const std::vector<std::string> names = {
        "a",  "s", "d", "f", "h", "g",   "z",   "x",     "c",      "v",      ".", "b",     "q", "w",
        "e",  "r", "y", "t", "1", "2",   "3",   "4",     "6",      "5",      "=", "9",     "7", "-",
        "8",  "0", "]", "o", "u", "[",   "i",   "p",     "return", "l",      "j", "'",     "k", ";",
        "\\", ",", "/", "n", "m", "dot", "tab", "space", "`",      "delete", ".", "escape"};
    const std::vector<std::string> upperNames = {
        // from 96 on
        "f5", "f6",  "f7",  "f3",       "f8",  "f9",   ".",     "f11",  ".",    ".",      ".",
        ".",  ".",   "f10", ".",        "f12", ".",    ".",     ".",    "home", "pageup", ".",
        "f4", "end", "f2",  "pagedown", "f1",  "left", "right", "down", "up"};
    int count = 0;
    const auto check = [&](const std::vector<std::string>& list, int first) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (list[i] == ".") continue;
            const std::string name = list[i] == "dot" ? "." : list[i];
            EXPECT_EQ(keyCode(name), first + static_cast<int>(i)) << name;
            ++count;
        }
    };
    check(names, 0);
    check(upperNames, 96);
    EXPECT_EQ(count, 72);
    for (const char* none : {"enter", "esc", "backspace", "cmd", "f13", "A", "", "keycode-"}) {
        EXPECT_EQ(keyCode(none), std::nullopt) << none;
    }
}

}  // namespace
}  // namespace quil
