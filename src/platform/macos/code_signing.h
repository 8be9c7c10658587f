#pragma once

#include "platform/code_signing.h"

namespace quil::macos {

/// The code-signing services.
class MacCodeSigning : public CodeSigning {
  public:
    std::int32_t copyGuestWithAttributes(const Value::Dictionary& attributes, std::uint32_t flags,
                                         SigningCodeRef& guest) override;
    std::int32_t copyStaticCode(const SigningCodeRef& guest, std::uint32_t flags,
                                SigningCodeRef& staticCode) override;
    std::int32_t copySigningInformation(const SigningCodeRef& staticCode, std::uint32_t flags,
                                        std::optional<Value>& information) override;
};

}  // namespace quil::macos
