#pragma once

#include "platform/code_signing.h"

namespace quil::linux_platform {

/// Programs on Linux carry no code signature: every call fails.
class LinuxCodeSigning : public CodeSigning {
  public:
    static constexpr std::int32_t kUnimplemented = -67072;  // errSecCSUnimplemented, CSCommon.h

    std::int32_t copyGuestWithAttributes(const Value::Dictionary&, std::uint32_t,
                                         SigningCodeRef&) override {
        return kUnimplemented;
    }
    std::int32_t copyStaticCode(const SigningCodeRef&, std::uint32_t, SigningCodeRef&) override {
        return kUnimplemented;
    }
    std::int32_t copySigningInformation(const SigningCodeRef&, std::uint32_t,
                                        std::optional<Value>&) override {
        return kUnimplemented;
    }
};

}  // namespace quil::linux_platform
