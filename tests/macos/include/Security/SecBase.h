// Result codes of the security services, as far as the Mac backend uses them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

enum : OSStatus { errSecSuccess = 0, errSecParam = -50 };
