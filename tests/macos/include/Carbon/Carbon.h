// Carbon, as far as the Mac backend uses it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" Boolean IsSecureEventInputEnabled();
