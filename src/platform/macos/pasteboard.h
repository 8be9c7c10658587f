#pragma once

#include "platform/macos/call_thread.h"
#include "platform/pasteboard.h"

namespace quil::macos {

/// The general NSPasteboard, which is for one thread: a thread of its own, since the process that
/// owns the contents may keep a read waiting (what it has only promised, a question to the user),
/// and the main thread has keys to translate and the process to end. Nothing is written while a
/// read is under way that we have given up: the write is refused.
class MacPasteboard : public Pasteboard {
  public:
    std::optional<std::string> stringForType(std::string_view type) override;
    void clearContents() override;
    bool setString(std::string_view text, std::string_view type) override;

  private:
    CallThread thread_{"quil.pasteboard"};
};

}  // namespace quil::macos
