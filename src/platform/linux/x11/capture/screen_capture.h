#pragma once

#include <memory>

#include "platform/linux/x11/capture/image_transfer.h"
#include "platform/linux/x11/capture/window_redirection.h"
#include "platform/linux/x11/connection.h"
#include "platform/screen_capture.h"

namespace quil::linux_platform {

/// Pictures of windows from the pixmaps that the Composite extension keeps for them. A window is
/// the one of the window list, without its frame and shadows. Pictures of displays from the root
/// window. The pointer is in neither.
class X11ScreenCapture : public ScreenCapture {
  public:
    /// `display` outlives this service.
    explicit X11ScreenCapture(X11Display& display) : display_(display) {}

    std::optional<ShareableContent> getShareableContent(bool excludingDesktopWindows,
                                                        bool onScreenWindowsOnly) override;
    /// Nothing, too, when the window was resized since the content was asked for.
    std::unique_ptr<CapturedImage> captureImage(const ShareableWindow& window,
                                                const StreamConfiguration& configuration) override;
    /// Nothing, too, when the display has changed since the content was asked for.
    std::unique_ptr<CapturedImage> captureDisplayImage(
        const ShareableDisplay& display, const StreamConfiguration& configuration) override;
    std::string pngRepresentation(const CapturedImage& image) override;

  private:
    /// What lasts as long as the connection to the server.
    struct Session {
        explicit Session(std::shared_ptr<X11Connection> server)
            : connection(std::move(server)), redirection(connection), transfer(connection) {}
        std::shared_ptr<X11Connection> connection;
        WindowRedirection redirection;
        ImageTransfer transfer;
    };
    /// Null when there is no X server.
    Session* session();

    X11Display& display_;
    std::unique_ptr<Session> session_;
};

}  // namespace quil::linux_platform
