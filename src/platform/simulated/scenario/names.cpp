#include "platform/simulated/scenario/names.h"

namespace quil::simulated {
namespace {

const char* description(Kind kind) {
    switch (kind) {
        case Kind::window:
            return "a window";
        case Kind::application:
            return "an application";
        case Kind::element:
            break;
    }
    return "an element";
}

}  // namespace

void Names::declare(const Node& id, Kind kind) {
    if (id.string().empty()) id.fail("an id cannot be empty");
    if (!declared_.emplace(id.string(), kind).second) {
        id.fail("the id \"" + id.string() + "\" is given twice");
    }
}

std::string Names::refer(const Node& id, Kind kind) {
    require(id, kind, "");
    return id.string();
}

void Names::require(const Node& id, Kind kind, std::string because) {
    id.string();
    references_.push_back({id, kind, std::move(because)});
}

void Names::check() const {
    for (const auto& [id, kind, because] : references_) {
        const auto found = declared_.find(id.string());
        if (found == declared_.end()) id.fail("nothing has the id \"" + id.string() + '"');
        if (kind != Kind::element && kind != found->second) {
            id.fail("must be the id of " + std::string(description(kind)) + because + ", \"" +
                    id.string() + "\" is " + description(found->second));
        }
    }
}

}  // namespace quil::simulated
