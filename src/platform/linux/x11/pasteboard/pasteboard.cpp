#include "platform/linux/x11/pasteboard/pasteboard.h"

#include <utility>

namespace quil::linux_platform {

/// The clipboard server; null without an X server.
ClipboardServer* X11Pasteboard::server() {
    if (server_ && server_->isAlive()) return server_.get();
    server_ = nullptr;
    if (auto connection = display_.connection()) {
        server_ = std::make_unique<ClipboardServer>(std::move(connection));
    }
    return server_.get();
}

std::optional<std::string> X11Pasteboard::stringForType(std::string_view type) {
    ClipboardServer* const clipboard = server();
    if (!clipboard || type != kPasteboardTypeString) return {};
    return clipboard->text();
}

void X11Pasteboard::clearContents() {
    if (ClipboardServer* const clipboard = server()) clipboard->clear();
}

bool X11Pasteboard::setString(std::string_view text, std::string_view type) {
    ClipboardServer* const clipboard = server();
    if (!clipboard || type != kPasteboardTypeString) return false;
    return clipboard->offer(std::string(text));
}

}  // namespace quil::linux_platform
