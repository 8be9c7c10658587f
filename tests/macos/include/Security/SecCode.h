// The code-signing services, as far as the Mac backend uses them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <Security/SecBase.h>

extern "C" {

typedef struct QUIL_BRIDGED(id) __SecCode* SecCodeRef;
typedef const struct QUIL_BRIDGED(id) __SecCode* SecStaticCodeRef;

using SecCSFlags = std::uint32_t;
enum : SecCSFlags { kSecCSSigningInformation = 1 << 1 };

extern const CFStringRef kSecGuestAttributePid;
extern const CFStringRef kSecCodeInfoIdentifier;
extern const CFStringRef kSecCodeInfoTeamIdentifier;

OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes,
                                        SecCSFlags flags, SecCodeRef* guest);
OSStatus SecCodeCopyStaticCode(SecCodeRef code, SecCSFlags flags, SecStaticCodeRef* staticCode);
OSStatus SecCodeCopySigningInformation(SecStaticCodeRef code, SecCSFlags flags,
                                       CFDictionaryRef* information);

}  // extern "C"
