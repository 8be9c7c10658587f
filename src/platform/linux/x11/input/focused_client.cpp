#include "platform/linux/x11/input/focused_client.h"

#include <algorithm>
#include <string_view>

#include "platform/linux/applications/idle_watch.h"
#include "platform/linux/applications/processes.h"
#include "platform/linux/x11/input/xim_processes.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// Keys are kept back for some 20 ms.
constexpr std::chrono::milliseconds kBusyProgramTimeout{200};
constexpr std::chrono::milliseconds kDelayedKeysTimeout{1000};
/// Input methods read the keyboard's map again, for which some need half a second.
constexpr std::chrono::milliseconds kBusyInputMethodTimeout{2000};

}  // namespace

xcb_window_t keyboardWindow(X11Connection& connection) {
    const auto focus =
        connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()));
    if (focus && focus->focus != XCB_INPUT_FOCUS_POINTER_ROOT &&
        focus->focus != connection.root()) {
        return focus->focus;
    }
    // Keys go to where the pointer is.
    const auto window = activeWindow(connection);
    return window ? window->id : xcb_window_t{XCB_WINDOW_NONE};
}

FocusedClient::FocusedClient(X11Connection& connection, xcb_window_t window)
    : program_(connection, window) {
    if (!program_.pid()) return;
    relay_ = KeyRelay::find(*program_.pid());
    ximProcesses_ = ximProcesses(connection, *program_.pid());
    if (!ximProcesses_.empty()) ximProcesses_.push_back(*program_.pid());
    hasMappedFile(*program_.pid(), [this](std::string_view path) {
        keepsKeysBack_ = keepsKeysBack_ || path.find("/libvclplug_") != path.npos;
        takesUnits_ = takesUnits_ || path.find("/libawt_xawt.") != path.npos;
        return keepsKeysBack_ && takesUnits_;
    });
}

void FocusedClient::waitForDelayedKeys() {
    if (!relay_ && ximProcesses_.empty() && !keepsKeysBack_) return;
    sendPing();
    waitForPings(0, kDelayedKeysTimeout);
}

bool FocusedClient::waitForPings(std::uint32_t open, std::chrono::milliseconds timeout) {
    if (!program_.waitForPings(open, timeout)) return false;
    if (open == 0 && relay_) relay_->waitUntilIdle();
    if (open == 0 && !ximProcesses_.empty()) {
        IdleWatch(ximProcesses_).waitForRest(IdleWatch::Clock::now() + kBusyInputMethodTimeout);
    }
    if (open == 0 && keepsKeysBack_) {
        IdleWatch({*program_.pid()})
            .wait(IdleWatch::Clock::now() + std::min(timeout, kBusyProgramTimeout));
    }
    return true;
}

}  // namespace quil::linux_platform
