#pragma once

namespace quil::linux_platform {

/// Whether an X server may be found where $DISPLAY points. False is certain, and found out in some
/// microseconds: there is no such name, or nothing listens at the sockets at which the library
/// would look. True may still turn out wrong; only connecting shows, which can take any time.
bool mayHaveDisplay();

}  // namespace quil::linux_platform
