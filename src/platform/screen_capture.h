#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace quil {

/// What the platform itself needs to know of a window or display in order to capture it, opaque
/// above the backends.
class PlatformWindow {
  public:
    virtual ~PlatformWindow() = default;
};

/// A window that can be captured, as the platform has listed it.
struct ShareableWindow {
    /// The platform's window number; names the window in a capture.
    std::uint32_t windowId = 0;
    /// 0 is the level of ordinary application windows.
    std::int64_t windowLayer = 0;
    /// Process id of the owning application; absent when the window has none.
    std::optional<std::int32_t> owningProcessId;
    /// In global screen coordinates.
    Rect frame;
    /// Comes with the listing and goes back to `captureImage`; null where the number is enough.
    std::shared_ptr<const PlatformWindow> platformWindow = nullptr;
};

/// A display that can be captured.
struct ShareableDisplay {
    /// As `Displays` numbers it.
    std::uint32_t displayId = 0;
    /// In global screen coordinates.
    Rect frame;
    /// Comes with the listing and goes back to `captureDisplayImage`; null where the number is
    /// enough.
    std::shared_ptr<const PlatformWindow> platformDisplay = nullptr;
};

/// The capturable content of the desktop, windows in the platform's order.
struct ShareableContent {
    std::vector<ShareableWindow> windows;
    std::vector<ShareableDisplay> displays;
};

/// How an image is to be made.
struct StreamConfiguration {
    /// Size of the image in pixels.
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool showsCursor = true;
};

/// A captured image, opaque above the backends.
class CapturedImage {
  public:
    virtual ~CapturedImage() = default;
};

/// Captures single windows and whole displays. Each call waits, for a bounded time, until the
/// platform has delivered.
class ScreenCapture {
  public:
    virtual ~ScreenCapture() = default;

    /// What can be captured; nothing on an error.
    virtual std::optional<ShareableContent> getShareableContent(bool excludingDesktopWindows,
                                                                bool onScreenWindowsOnly) = 0;
    /// An image of that window alone, whatever covers it, scaled to the configured size; made
    /// smaller, its pixels are averages. Null on an error (the window is gone, or has no content).
    virtual std::unique_ptr<CapturedImage> captureImage(
        const ShareableWindow& window, const StreamConfiguration& configuration) = 0;
    /// An image of all that the display shows (every window, menus and tooltips included), scaled
    /// to the configured size; made smaller, its pixels are averages. Null on an error.
    virtual std::unique_ptr<CapturedImage> captureDisplayImage(
        const ShareableDisplay& display, const StreamConfiguration& configuration) = 0;
    /// The image as the bytes of a PNG file; empty when it cannot be encoded.
    virtual std::string pngRepresentation(const CapturedImage& image) = 0;
};

}  // namespace quil
