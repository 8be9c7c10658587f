#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/x11/pasteboard/selection_answers.h"
#include "platform/linux/x11/pasteboard/selection_contents.h"
#include "platform/linux/x11/pasteboard/selection_window.h"

namespace quil::linux_platform {

/// Reads and owns the CLIPBOARD selection, and answers the clients that ask for it, on a thread of
/// its own. Operations wait for the thread, which bounds its waits for others.
class ClipboardServer {
  public:
    /// `connection` is the server's alone from now on.
    explicit ClipboardServer(std::shared_ptr<X11Connection> connection);
    /// What is on offer goes with the server.
    ~ClipboardServer();
    ClipboardServer(const ClipboardServer&) = delete;
    ClipboardServer& operator=(const ClipboardServer&) = delete;

    /// False once the X server has gone; the clipboard server then never works again.
    bool isAlive() const { return connection_->isAlive(); }
    /// The text of the clipboard, whoever owns it; nothing when there is none.
    std::optional<std::string> text();
    /// Takes the clipboard and offers that text, or nothing. Whether we own it now.
    bool offer(std::optional<std::string> text);

  private:
    void run();
    void handle(const xcb_generic_event_t& event);
    bool take(SharedText text);
    /// Runs the task on the thread and waits for it.
    template <typename Result>
    Result onThread(std::function<Result()> task);
    void wakeThread();
    std::vector<std::function<void()>> takeTasks(bool& isEnding);

    std::shared_ptr<X11Connection> connection_;
    const xcb_atom_t clipboard_;
    // Used by the thread alone.
    SelectionContents contents_;
    SelectionWindow window_;
    SelectionAnswers answers_;

    int wakeDescriptor_;
    std::mutex lock_;
    std::vector<std::function<void()>> tasks_;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace quil::linux_platform
