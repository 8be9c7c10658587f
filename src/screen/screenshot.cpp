#include "screen/screenshot.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "screen/display_geometry.h"
#include "text/base64.h"

namespace quil {
namespace {

constexpr double kPixelsPerPoint = 2;

/// Two absent owners are equal: without a frontmost application, a window without an owner is the
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
std::int64_t pixels(double points, double scale = kPixelsPerPoint) {
    const double size = std::trunc(points * scale);
    return std::abs(size) < 1e15 ? static_cast<std::int64_t>(size) : 0;
}

StreamConfiguration configurationFor(const Rect& frame, double scale) {
    // A narrow thing made small is still a picture.
    const auto size = [&](double points) {
        return points > 0 ? std::max<std::int64_t>(1, pixels(points, scale)) : 0;
    };
    return {.width = size(frame.width), .height = size(frame.height), .showsCursor = false};
}

/// Empty without an image, or when it cannot be encoded.
std::string dataUrl(ScreenCapture& capture, const CapturedImage* image) {
    const std::string png = image ? capture.pngRepresentation(*image) : std::string();
    if (png.empty()) return {};
    std::string url = "data:image/png;base64,";
    appendBase64(url, png);
    return url;
}

}  // namespace

std::optional<std::string> screenshotDataURL(Platform& platform) {
    if (!platform.permissions().preflightScreenCaptureAccess()) return {};
    ScreenCapture& capture = platform.screenCapture();
    const auto content = capture.getShareableContent(/*excludingDesktopWindows=*/false,
                                                     /*onScreenWindowsOnly=*/true);
    if (!content) return {};

    const auto application = platform.workspace().frontmostApplication();
    const ShareableWindow* window = chooseWindow(
        *content, application ? std::optional(application->processIdentifier) : std::nullopt);
    if (!window) return {};

    const auto image = capture.captureImage(*window, {.width = pixels(window->frame.width),
                                                      .height = pixels(window->frame.height),
                                                      .showsCursor = false});
    std::string url = dataUrl(capture, image.get());
    return url.empty() ? std::nullopt : std::optional(std::move(url));
}

std::optional<Capture> captureDisplay(Displays& displays, ScreenCapture& capture,
                                      std::optional<std::int64_t> display, double scale) {
    const auto active = activeDisplays(displays);
    const auto found = std::ranges::find_if(
        active, [&](const DisplayGeometry& entry) { return !display || entry.id == *display; });
    if (found == active.end()) return {};
    Capture result{.dataUrl = {}, .bounds = found->bounds};
    const auto content = capture.getShareableContent(/*excludingDesktopWindows=*/false,
                                                     /*onScreenWindowsOnly=*/true);
    if (!content) return result;
    const auto shareable =
        std::ranges::find(content->displays, found->id, &ShareableDisplay::displayId);
    if (shareable == content->displays.end()) return result;
    const auto image =
        capture.captureDisplayImage(*shareable, configurationFor(found->bounds, scale));
    result.dataUrl = dataUrl(capture, image.get());
    return result;
}

std::optional<Capture> captureWindow(ScreenCapture& capture, std::int64_t window, double scale) {
    const auto content = capture.getShareableContent(/*excludingDesktopWindows=*/false,
                                                     /*onScreenWindowsOnly=*/true);
    if (!content) return {};
    const auto found = std::ranges::find(content->windows, window, &ShareableWindow::windowId);
    if (found == content->windows.end()) return {};
    const auto image = capture.captureImage(*found, configurationFor(found->frame, scale));
    return Capture{.dataUrl = dataUrl(capture, image.get()), .bounds = found->frame};
}

}  // namespace quil
