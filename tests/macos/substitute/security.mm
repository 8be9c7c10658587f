// The code-signing services.
#import <Foundation/Foundation.h>
#import <Security/SecCode.h>

#include "substitute.h"

using namespace quil;
using namespace quil::substitute;

@interface CodeObject : NSObject {
  @public
    SigningCodeRef code;
}
@end
@implementation CodeObject
@end

namespace {

template <typename Ref>
void handOver(const SigningCodeRef& code, Ref* place) {
    if (!code) return;
    CodeObject* object = [[CodeObject alloc] init];
    object->code = code;
    *place = handedOver<Ref>(object);
}

}  // namespace

extern "C" {

const CFStringRef kSecGuestAttributePid = (__bridge CFStringRef) @"pid";
const CFStringRef kSecCodeInfoIdentifier = (__bridge CFStringRef) @"identifier";
const CFStringRef kSecCodeInfoTeamIdentifier = (__bridge CFStringRef) @"teamid";

OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes,
                                        SecCSFlags flags, SecCodeRef* guest) {
    NSDictionary* names = own<NSDictionary>(attributes);
    id pid = names[(__bridge NSString*)kSecGuestAttributePid];
    if (host || !pid) violation("SecCodeCopyGuestWithAttributes: not a process of the system");
    if (CFNumberGetByteSize((__bridge CFNumberRef)pid) != sizeof(pid_t)) {
        violation("SecCodeCopyGuestWithAttributes: not a number of a process id's width");
    }
    SigningCodeRef code;
    const auto status = services->codeSigning().copyGuestWithAttributes(
        {{std::string(kGuestAttributePid), value(pid)}}, flags, code);
    if (status == errSecSuccess) handOver(code, guest);
    return status;
}

OSStatus SecCodeCopyStaticCode(SecCodeRef code, SecCSFlags flags, SecStaticCodeRef* staticCode) {
    SigningCodeRef result;
    const auto status =
        services->codeSigning().copyStaticCode(own<CodeObject>(code)->code, flags, result);
    if (status == errSecSuccess) handOver(result, staticCode);
    return status;
}

/// Without the flag for the signing information there is no team in it.
OSStatus SecCodeCopySigningInformation(SecStaticCodeRef code, SecCSFlags flags,
                                       CFDictionaryRef* information) {
    std::optional<Value> result;
    const auto status =
        services->codeSigning().copySigningInformation(own<CodeObject>(code)->code, flags, result);
    if (status != errSecSuccess) return status;
    if (!result || !result->dictionary()) return errSecSuccess;
    Value::Dictionary members = *result->dictionary();
    if (!(flags & kSecCSSigningInformation)) members.erase(std::string(kCodeInfoTeamIdentifier));
    *information = handedOver<CFDictionaryRef>(dictionary(members));
    return errSecSuccess;
}

}  // extern "C"
