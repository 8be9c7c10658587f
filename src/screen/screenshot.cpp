#include "screen/screenshot.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "screen/windows.h"
#include "text/base64.h"

namespace quil {
namespace {

constexpr double kPixelsPerPoint = 2;

/// Two absent owners are equal: without a frontmost application, a window that nobody owns is the
/// one to take.
const ShareableWindow* chooseWindow(const ShareableContent& content,
                                    std::optional<std::int32_t> frontmostProcessId) {
    const ShareableWindow* firstOrdinary = nullptr;
    for (const ShareableWindow& window : content.windows) {
        if (window.windowLayer != 0) continue;
        if (window.owningProcessId == frontmostProcessId) return &window;
        if (!firstOrdinary) firstOrdinary = &window;
    }
    return firstOrdinary;
}

/// Truncated toward zero; 0, which is no image's size, for what no integer can hold.
std::int64_t pixels(double points) {
    const double size = std::trunc(points * kPixelsPerPoint);
    return std::abs(size) < 1e15 ? static_cast<std::int64_t>(size) : 0;
}

}  // namespace

std::optional<std::string> screenshotDataURL(Platform& platform) {
    if (!platform.permissions().preflightScreenCaptureAccess()) return {};
    ScreenCapture& capture = platform.screenCapture();
    const auto content = capture.getShareableContent(/*excludingDesktopWindows=*/false,
                                                     /*onScreenWindowsOnly=*/true);
    if (!content) return {};

    const auto application = frontmostApplication(platform);
    const ShareableWindow* window = chooseWindow(
        *content, application ? std::optional(application->processIdentifier) : std::nullopt);
    if (!window) return {};

    const auto image = capture.captureImage(*window, {.width = pixels(window->frame.width),
                                                      .height = pixels(window->frame.height),
                                                      .showsCursor = false});
    if (!image) return {};
    const std::string png = capture.pngRepresentation(*image);
    if (png.empty()) return {};
    std::string url = "data:image/png;base64,";
    appendBase64(url, png);
    return url;
}

}  // namespace quil
