#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "json/json.h"
#include "platform/streams.h"

namespace quil {

/// Writes every response of the process, one line each. Used from the request loop's thread alone.
/// A response that cannot be encoded (text that is not UTF-8) or delivered is dropped without
/// trace.
class Responses {
  public:
    /// `output` outlives the responses.
    explicit Responses(OutputStream& output) : output_(output) {}

    /// Writes a JSON object as one compact line, with a single unbuffered write.
    void writeLine(const Json& object);

    /// {"id", "result"}
    void respond(std::int64_t id, Json result);
    /// {"id", "error": {"message"}}: a malformed parameter or an unknown method.
    void respondError(std::int64_t id, const std::string& message);
    /// {"id", "error": {"code", "message"}}: a missing permission or a failed operation.
    void respondErrorCode(std::int64_t id, const std::string& code, const std::string& message);
    /// An `AxError` by its kind; any other error as a failed command with its own description.
    void respondAxError(std::int64_t id, const std::exception& error);

  private:
    OutputStream& output_;
};

}  // namespace quil
