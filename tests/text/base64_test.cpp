#include "text/base64.h"

#include <gtest/gtest.h>

namespace quil {
namespace {

TEST(Base64, PadsTheLastGroup) {
    for (const auto& [bytes, expected] :
         {std::pair<std::string_view, const char*>("", ""),
          {"f", "Zg=="},
          {"fo", "Zm8="},
          {"foo", "Zm9v"},
          {std::string_view("\0\xff\xfe\xfb\xf0", 5), "AP/++/A="}}) {
        std::string text;
        appendBase64(text, bytes);
        EXPECT_EQ(text, expected);
    }
}

}  // namespace
}  // namespace quil
