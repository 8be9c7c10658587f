#pragma once

#include "platform/screen_capture.h"

namespace quil::macos {

/// ScreenCaptureKit. Captures need macOS 14; before, there is no image.
class MacScreenCapture : public ScreenCapture {
  public:
    std::optional<ShareableContent> getShareableContent(bool excludingDesktopWindows,
                                                        bool onScreenWindowsOnly) override;
    std::unique_ptr<CapturedImage> captureImage(const ShareableWindow& window,
                                                const StreamConfiguration& configuration) override;
    std::unique_ptr<CapturedImage> captureDisplayImage(
        const ShareableDisplay& display, const StreamConfiguration& configuration) override;
    std::string pngRepresentation(const CapturedImage& image) override;
};

}  // namespace quil::macos
