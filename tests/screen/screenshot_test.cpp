#include "screen/screenshot.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"
#include "text/base64.h"

namespace quil {
namespace {

constexpr std::string_view kPrefix = "data:image/png;base64,";

std::string base64(std::string_view bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text;
}

/// The start of the URL of an image of that size: prefix, signature and the header's size.
std::string urlStart(int width, int height) {
    std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16);
    for (const int side : {width, height}) {
        for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(side >> shift);
    }
    return std::string(kPrefix) + base64(bytes);
}

TEST(Base64, PadsTheLastGroup) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64(std::string_view("\0\xff\xfe\xfb\xf0", 5)), "AP/++/A=");
}

class Screenshot : public testing::Test {
  protected:
    std::string take() { return screenshotDataURL(platform).value_or("none"); }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
};

// Each window has a size of its own, which tells it from the others in the image.
TEST_F(Screenshot, TakesTheFrontmostApplicationsFirstOrdinaryWindow) {
    EXPECT_EQ(take(), "none");
    auto& other = desktop.application(100, "Other");
    other.window("Menu bar", {0, 0, 10, 1}).layer(24);
    EXPECT_EQ(take(), "none");
    other.window("In front", {0, 0, 20, 1});
    auto& notes = desktop.application(200, "Notes");
    notes.window("Panel", {0, 0, 30, 1}).layer(3);
    notes.window("Minimised", {0, 0, 35, 1}).onScreen(false);
    EXPECT_TRUE(take().starts_with(urlStart(40, 2)));

    desktop.frontmost(&notes);  // which has no ordinary window on the screen: anyone's first
    EXPECT_TRUE(take().starts_with(urlStart(40, 2)));
    auto& main = notes.window("Main", {5, 5, 40, 1});
    notes.window("Second", {5, 5, 45, 1});
    EXPECT_TRUE(take().starts_with(urlStart(80, 2)));

    desktop.frontmost(nullptr);  // then a window that nobody owns, if there is one
    EXPECT_TRUE(take().starts_with(urlStart(40, 2)));
    desktop.window("Unowned", {0, 0, 50, 1});
    EXPECT_TRUE(take().starts_with(urlStart(100, 2)));

    desktop.frontmost(&notes);  // whose window is never one that nobody owns
    main.remove();
    EXPECT_TRUE(take().starts_with(urlStart(90, 2)));
}

TEST_F(Screenshot, HasTwoPixelsPerPointTruncated) {
    auto& window = desktop.application(100, "Notes").window("Main", {0, 0, 800.75, 600.25});
    const std::string url = take();
    EXPECT_TRUE(url.starts_with(urlStart(1601, 1200)));
    EXPECT_EQ(url.find('\n'), std::string::npos);
    for (const Rect impossible : {Rect{0, 0, 0.4, 10}, Rect{0, 0, -5, 10}, Rect{0, 0, 1e300, 10},
                                  Rect{0, 0, std::numeric_limits<double>::quiet_NaN(), 10}}) {
        window.bounds(impossible);
        EXPECT_EQ(take(), "none");
    }
}

TEST_F(Screenshot, IsAbsentWhenAnythingFails) {
    desktop.application(100, "Notes").window("Main", {0, 0, 8, 6});
    for (const char* call : {"getShareableContent", "captureImage", "pngRepresentation"}) {
        desktop.on(call).nth(1).fails();
        EXPECT_EQ(take(), "none") << call;
        EXPECT_NE(take(), "none") << call;
    }
    const int asked = desktop.callCount("getShareableContent");
    desktop.permissions.screenRecording = false;
    EXPECT_EQ(take(), "none");
    EXPECT_EQ(desktop.callCount("getShareableContent"), asked);
}

TEST_F(Screenshot, AsksWhoIsFrontmostOnceTheContentHasArrived) {
    desktop.application(100, "First").window("First", {0, 0, 10, 1});
    auto& second = desktop.application(200, "Second");
    second.window("Second", {0, 0, 20, 1});
    desktop.on("getShareableContent").changes([&](SimulatedDesktop&) { second.activate(); });
    EXPECT_TRUE(take().starts_with(urlStart(40, 2)));
}

}  // namespace
}  // namespace quil
