#include "runtime/responses.h"

#include "accessibility/ax_error.h"

namespace quil {
namespace {

const char* axErrorCodeName(AxError::Kind kind) {
    switch (kind) {
        case AxError::Kind::unsupported:
            return "COMPUTER_CONTROL_UNSUPPORTED_OPERATION";
        case AxError::Kind::failed:
            return "COMPUTER_CONTROL_COMMAND_FAILED";
        case AxError::Kind::noSnapshot:
        case AxError::Kind::unknownToken:
        case AxError::Kind::staleSnapshot:
            return "COMPUTER_CONTROL_STALE_SNAPSHOT";
    }
    return "COMPUTER_CONTROL_COMMAND_FAILED";
}

}  // namespace

void Responses::writeLine(const Json& object) {
    std::string line;
    try {
        line = object.dump();
    } catch (const Json::exception&) {
        return;
    }
    line += '\n';
    output_.write(line);
}

void Responses::respond(std::int64_t id, Json result) {
    Json line = {{"id", id}};
    line["result"] = std::move(result);
    writeLine(line);
}

void Responses::respondError(std::int64_t id, const std::string& message) {
    writeLine({{"id", id}, {"error", {{"message", message}}}});
}

void Responses::respondErrorCode(std::int64_t id, const std::string& code,
                                 const std::string& message) {
    writeLine({{"id", id}, {"error", {{"code", code}, {"message", message}}}});
}

void Responses::respondAxError(std::int64_t id, const std::exception& error) {
    const auto* axError = dynamic_cast<const AxError*>(&error);
    const auto kind = axError ? axError->kind() : AxError::Kind::failed;
    respondErrorCode(id, axErrorCodeName(kind), error.what());
}

}  // namespace quil
