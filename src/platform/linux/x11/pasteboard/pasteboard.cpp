#include "platform/linux/x11/pasteboard/pasteboard.h"

#include <chrono>
#include <utility>

#include "platform/linux/x11/input/focused_client.h"
#include "platform/linux/x11/input/program_wait.h"

namespace quil::linux_platform {
namespace {

/// For programs to fetch what is on offer.
constexpr std::chrono::milliseconds kPasteTimeout{2000};

}  // namespace

/// The clipboard server; null without an X server.
ClipboardServer* X11Pasteboard::server() {
    if (server_ && server_->isAlive()) return server_.get();
    server_ = nullptr;
    if (auto connection = display_.connection()) {
        server_ = ClipboardServer::start(std::move(connection));
    }
    return server_.get();
}

std::optional<std::string> X11Pasteboard::stringForType(std::string_view type) {
    ClipboardServer* const clipboard = server();
    if (!clipboard || type != kPasteboardTypeString) return {};
    return clipboard->text();
}

void X11Pasteboard::clearContents() {
    ClipboardServer* const clipboard = server();
    if (!clipboard) return;
    const auto deadline = ClipboardServer::Clock::now() + kPasteTimeout;
    if (clipboard->isOffering()) letProgramPaste(deadline);
    clipboard->clear(deadline);
}

/// A busy program may not have begun yet, or be between two of the many requests that some make for
/// one paste: Chromium makes sixteen, and pastes nothing when the owner changes before the last.
void X11Pasteboard::letProgramPaste(ClipboardServer::Clock::time_point deadline) {
    const auto connection = programsDisplay_.connection();
    if (connection) waitForPrograms(*connection, {keyboardWindow(*connection)}, deadline);
}

bool X11Pasteboard::setString(std::string_view text, std::string_view type) {
    ClipboardServer* const clipboard = server();
    if (!clipboard || type != kPasteboardTypeString) return false;
    return clipboard->offer(std::string(text));
}

}  // namespace quil::linux_platform
