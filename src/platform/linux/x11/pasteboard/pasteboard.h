#pragma once

#include <memory>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/pasteboard/clipboard_server.h"
#include "platform/pasteboard.h"

namespace quil::linux_platform {

/// The CLIPBOARD selection of the X server, as text. What is put there is served to other programs
/// until another takes the clipboard or this process ends.
class X11Pasteboard : public Pasteboard {
  public:
    std::optional<std::string> stringForType(std::string_view type) override;
    void clearContents() override;
    bool setString(std::string_view text, std::string_view type) override;

  private:
    ClipboardServer* server();
    void letProgramPaste(ClipboardServer::Clock::time_point deadline);

    X11Display display_;
    /// For the program that pastes; the clipboard server keeps its own connection to itself.
    X11Display programsDisplay_;
    std::unique_ptr<ClipboardServer> server_;
};

}  // namespace quil::linux_platform
