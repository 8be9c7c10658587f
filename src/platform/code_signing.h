#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/value.h"

namespace quil {

/// Request the signing information proper (identifier, team) from `copySigningInformation`.
inline constexpr std::uint32_t kSigningInformation = 2;  // kSecCSSigningInformation, SecCode.h
/// Members of the information dictionary; both strings.
inline constexpr std::string_view kCodeInfoTeamIdentifier = "teamid";
inline constexpr std::string_view kCodeInfoIdentifier = "identifier";
/// Attribute of a guest: its process id, an integer.
inline constexpr std::string_view kGuestAttributePid = "pid";

/// A code object, opaque above the backends.
class SigningCode {
  public:
    virtual ~SigningCode() = default;
};
using SigningCodeRef = std::shared_ptr<const SigningCode>;

/// The code-signing services. Each call returns 0 and sets its result, or returns the platform's
/// error code and leaves it alone. A result may be null even on success.
class CodeSigning {
  public:
    virtual ~CodeSigning() = default;

    /// The running code that `attributes` names, below the system's root host.
    virtual std::int32_t copyGuestWithAttributes(const Value::Dictionary& attributes,
                                                 std::uint32_t flags, SigningCodeRef& guest) = 0;
    /// The code on disk from which the running `guest` came.
    virtual std::int32_t copyStaticCode(const SigningCodeRef& guest, std::uint32_t flags,
                                        SigningCodeRef& staticCode) = 0;
    /// What the signature of code on disk says, a dictionary; `flags` select how much of it.
    virtual std::int32_t copySigningInformation(const SigningCodeRef& staticCode,
                                                std::uint32_t flags,
                                                std::optional<Value>& information) = 0;
};

}  // namespace quil
