#pragma once

#include <exception>
#include <string>

namespace quil {

/// The error of the accessibility and application operations.
class AxError : public std::exception {
  public:
    enum class Kind {
        unsupported,    ///< The request cannot be carried out as asked; carries a message.
        failed,         ///< The platform refused; carries a message.
        noSnapshot,     ///< No tree has been observed since the process started.
        unknownToken,   ///< The token names no recorded element of the current tree.
        staleSnapshot,  ///< The tree has changed since the last observation.
    };

    static AxError unsupported(std::string message) {
        return {Kind::unsupported, std::move(message)};
    }
    static AxError failed(std::string message) { return {Kind::failed, std::move(message)}; }
    static AxError noSnapshot() {
        return {Kind::noSnapshot, "observe the accessibility tree first"};
    }
    static AxError unknownToken() { return {Kind::unknownToken, "unknown element token"}; }
    static AxError staleSnapshot() {
        return {Kind::staleSnapshot, "the accessibility tree changed; observe again"};
    }

    Kind kind() const { return kind_; }
    const char* what() const noexcept override { return message_.c_str(); }

  private:
    AxError(Kind kind, std::string message) : kind_(kind), message_(std::move(message)) {}

    Kind kind_;
    std::string message_;
};

}  // namespace quil
