#include "platform/linux/x11/tap/compose.h"

#include <array>
#include <clocale>

namespace quil::linux_platform {
namespace {

/// Toolkits compose in every language; only the oldest have no rules.
constexpr const char* kUsualLocale = "en_US.UTF-8";

}  // namespace

Compose::Compose() : context_(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES)) {
    if (!context_) return;
    // The library complains about files on standard error, which is our host's.
    xkb_context_set_log_fn(context_.get(),
                           [](xkb_context*, xkb_log_level, const char*, va_list) {});
    const std::string own = std::setlocale(LC_CTYPE, nullptr);
    if (own != "C" && own != "POSIX") {
        table_.reset(xkb_compose_table_new_from_locale(context_.get(), own.c_str(),
                                                       XKB_COMPOSE_COMPILE_NO_FLAGS));
    }
    if (!table_) {
        table_.reset(xkb_compose_table_new_from_locale(context_.get(), kUsualLocale,
                                                       XKB_COMPOSE_COMPILE_NO_FLAGS));
    }
    if (table_) state_.reset(xkb_compose_state_new(table_.get(), XKB_COMPOSE_STATE_NO_FLAGS));
}

Compose::Result Compose::type(std::uint32_t keysym) {
    if (!state_) return {.isPending = false, .text = keysymText(keysym)};
    xkb_compose_state_feed(state_.get(), keysym);
    switch (xkb_compose_state_get_status(state_.get())) {
        case XKB_COMPOSE_COMPOSING:
            return {.isPending = true, .text = {}};
        case XKB_COMPOSE_COMPOSED: {
            std::array<char, 256> text{};
            xkb_compose_state_get_utf8(state_.get(), text.data(), text.size());
            reset();
            return {.isPending = false, .text = text.data()};
        }
        case XKB_COMPOSE_CANCELLED:
        case XKB_COMPOSE_NOTHING:
            break;
    }
    reset();
    return {.isPending = false, .text = keysymText(keysym)};
}

void Compose::reset() {
    if (state_) xkb_compose_state_reset(state_.get());
}

std::string keysymText(std::uint32_t keysym) {
    std::array<char, 8> text{};
    return xkb_keysym_to_utf8(keysym, text.data(), text.size()) > 0 ? text.data() : "";
}

}  // namespace quil::linux_platform
