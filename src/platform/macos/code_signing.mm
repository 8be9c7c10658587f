#import "platform/macos/code_signing.h"

#import <Foundation/Foundation.h>
#import <Security/SecBase.h>
#import <Security/SecCode.h>

#import "platform/macos/values.h"

namespace quil::macos {
namespace {

/// Running code (SecCodeRef) or code on disk (SecStaticCodeRef).
template <typename T>
struct Code : SigningCode {
    explicit Code(CfRef<T> object) : code(std::move(object)) {}
    const CfRef<T> code;
};

template <typename T>
T codeOf(const SigningCodeRef& code) {
    return code ? static_cast<const Code<T>&>(*code).code.get() : nullptr;
}

/// A code object as it was returned: null stays null.
template <typename T>
SigningCodeRef owned(T code) {
    if (!code) return nullptr;
    return std::make_shared<Code<T>>(CfRef<T>::adopt(code));
}

bool hasStringKeys(NSDictionary* members) {
    for (id key in members) {
        if (![key isKindOfClass:[NSString class]]) return false;
    }
    return true;
}

}  // namespace

std::int32_t MacCodeSigning::copyGuestWithAttributes(const Value::Dictionary& attributes,
                                                     std::uint32_t flags, SigningCodeRef& guest) {
    NSMutableDictionary* named = [NSMutableDictionary dictionary];
    for (const auto& [name, value] : attributes) {
        const auto pid = name == kGuestAttributePid ? value.integer() : std::nullopt;
        if (!pid) return errSecParam;
        // A number of the width of a process id (pid_t).
        named[(__bridge id)kSecGuestAttributePid] = @(static_cast<pid_t>(*pid));
    }
    SecCodeRef code = nullptr;
    const OSStatus status =
        SecCodeCopyGuestWithAttributes(nullptr, (__bridge CFDictionaryRef)named, flags, &code);
    SigningCodeRef result = owned(code);
    if (status == errSecSuccess) guest = std::move(result);
    return status;
}

std::int32_t MacCodeSigning::copyStaticCode(const SigningCodeRef& guest, std::uint32_t flags,
                                            SigningCodeRef& staticCode) {
    SecStaticCodeRef code = nullptr;
    const OSStatus status = SecCodeCopyStaticCode(codeOf<SecCodeRef>(guest), flags, &code);
    SigningCodeRef result = owned(code);
    if (status == errSecSuccess) staticCode = std::move(result);
    return status;
}

std::int32_t MacCodeSigning::copySigningInformation(const SigningCodeRef& staticCode,
                                                    std::uint32_t flags,
                                                    std::optional<Value>& information) {
    CFDictionaryRef copied = nullptr;
    const OSStatus status =
        SecCodeCopySigningInformation(codeOf<SecStaticCodeRef>(staticCode), flags, &copied);
    const auto members = CfRef<CFDictionaryRef>::adopt(copied);
    if (status != errSecSuccess) return status;
    if (!members || !hasStringKeys((__bridge NSDictionary*)members.get())) {
        information.reset();
        return status;
    }
    Value::Dictionary result;
    const auto add = [&](std::string_view name, CFStringRef key) {
        auto value = valueOf(CFDictionaryGetValue(members.get(), key));
        if (value) result.emplace(name, std::move(*value));
    };
    add(kCodeInfoTeamIdentifier, kSecCodeInfoTeamIdentifier);
    add(kCodeInfoIdentifier, kSecCodeInfoIdentifier);
    information = Value(std::move(result));
    return status;
}

}  // namespace quil::macos
