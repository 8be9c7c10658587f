#include "platform/linux/applications/collation.h"

#include <glib.h>
#include <string.h>

#include "platform/linux/applications/glib_handles.h"

namespace quil::linux_platform {
namespace {

GlibText caseless(std::string_view text) {
    const GlibText folded(g_utf8_casefold(text.data(), static_cast<gssize>(text.size())));
    return GlibText(g_utf8_normalize(folded.get(), -1, G_NORMALIZE_DEFAULT_COMPOSE));
}

}  // namespace

// Only what an order is made of: a category that is not installed would cost the others.
LinuxCollation::LinuxCollation()
    : locale_(newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, "", nullptr)) {}

int LinuxCollation::localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
    const GlibText first = caseless(a);
    const GlibText second = caseless(b);
    // Nothing compares with text that is not UTF-8; the rest of the system never hands any down.
    if (!first || !second) return static_cast<int>(!first) - static_cast<int>(!second);
    return locale_ ? strcoll_l(first.get(), second.get(), locale_.get())
                   : strcmp(first.get(), second.get());
}

}  // namespace quil::linux_platform
