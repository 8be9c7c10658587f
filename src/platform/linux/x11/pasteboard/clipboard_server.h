#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/x11/pasteboard/selection_contents.h"
#include "platform/linux/x11/pasteboard/selection_responder.h"
#include "platform/linux/x11/pasteboard/selection_window.h"
#include "platform/linux/x11/wake_event.h"

namespace quil::linux_platform {

/// Reads and owns the CLIPBOARD selection, and serves the clients that ask for it, on a thread of
/// its own. Operations wait for the thread, which bounds its waits for others.
class ClipboardServer {
  public:
    using Clock = SelectionWindow::Clock;

    /// `connection` is the server's alone from now on.
    /// Null when the process may have no more threads or descriptors.
    static std::unique_ptr<ClipboardServer> start(std::shared_ptr<X11Connection> connection);
    /// A text on offer is handed to the clipboard manager, if there is one, and else goes with us.
    ~ClipboardServer();
    ClipboardServer(const ClipboardServer&) = delete;
    ClipboardServer& operator=(const ClipboardServer&) = delete;

    /// False once the X server has gone; the clipboard server then never works again.
    bool isAlive() const { return connection_->isAlive(); }
    /// The text of the clipboard, whichever client owns it; nothing when there is none.
    std::optional<std::string> text();
    /// Whether a text of ours is there to be fetched.
    bool isOffering();
    /// Takes the clipboard and offers nothing. An `offer` that follows at once makes one change of
    /// owner of the two: programs that hear of changes ask what is there, and some, told of two,
    /// take the first reply for the second. Clients that have begun to fetch what is on offer
    /// finish first, until `deadline` at the latest.
    void clear(Clock::time_point deadline);
    /// Takes the clipboard and offers that text. Whether we own it now.
    bool offer(std::string text);

  private:
    explicit ClipboardServer(std::shared_ptr<X11Connection> connection);
    void run();
    void handle(const xcb_generic_event_t& event);
    bool take(SharedText text, xcb_timestamp_t time);
    void clearNow();
    void finishTransfers(Clock::time_point deadline);
    void handOver();
    /// Runs the task on the thread and waits for it.
    template <typename Result>
    Result onThread(std::function<Result()> task);
    std::vector<std::function<void()>> takeTasks(bool& isEnding);

    std::shared_ptr<X11Connection> connection_;
    const xcb_atom_t clipboard_;
    // Used by the thread alone.
    SelectionContents contents_;
    SelectionWindow window_;
    SelectionResponder responder_;
    /// Until then an offer may still follow a `clear`, which then has not been made yet.
    std::optional<Clock::time_point> clearsAt_;
    /// The server time of that `clear`.
    xcb_timestamp_t clearTime_ = 0;

    WakeEvent wake_;
    std::mutex lock_;
    std::vector<std::function<void()>> tasks_;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace quil::linux_platform
