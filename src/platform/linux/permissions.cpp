#include "platform/linux/permissions.h"

#include <xcb/composite.h>
#include <xcb/record.h>

namespace quil::linux_platform {

bool LinuxPermissions::preflightScreenCaptureAccess() {
    const auto connection = display_.connection();
    if (!connection || !connection->hasExtension(xcb_composite_id)) return false;
    // Windows have pixmaps of their own since version 0.2.
    const auto version = connection->reply(xcb_composite_query_version_reply,
                                           xcb_composite_query_version(connection->get(), 0, 4));
    return version && (version->major_version > 0 || version->minor_version >= 2);
}

bool LinuxPermissions::preflightListenEventAccess() {
    const auto connection = display_.connection();
    return connection && connection->hasExtension(xcb_record_id);
}

}  // namespace quil::linux_platform
