#pragma once

#include <xkbcommon/xkbcommon-compose.h>

#include <cstdint>
#include <memory>
#include <string>

namespace quil::linux_platform {

/// The text of single keysyms, and of the sequences that begin with a dead key or the Compose
/// key, by the rules of the user's language.
class Compose {
  public:
    Compose();

    struct Result {
        /// The key only begins or continues a sequence; its text is still to come.
        bool isPending = false;
        /// What the key types, or the sequence that it ends; empty when that is nothing.
        std::string text;
    };
    /// The next keysym that was typed.
    Result type(std::uint32_t keysym);
    /// Forgets a sequence that has begun.
    void reset();

  private:
    struct Deleter {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
        void operator()(xkb_compose_table* table) const { xkb_compose_table_unref(table); }
        void operator()(xkb_compose_state* state) const { xkb_compose_state_unref(state); }
    };
    std::unique_ptr<xkb_context, Deleter> context_;
    std::unique_ptr<xkb_compose_table, Deleter> table_;
    /// Null when there are no rules.
    std::unique_ptr<xkb_compose_state, Deleter> state_;
};

/// The text of a keysym; empty when it has none.
std::string keysymText(std::uint32_t keysym);

}  // namespace quil::linux_platform
