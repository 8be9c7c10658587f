#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/simulated/scenario/node.h"

namespace quil::simulated {

/// What an id of a scenario names. A window and an application are elements, too.
enum class Kind { element, window, application };

/// The ids that a scenario gives and those that it refers to. An id may be referred to before it is
/// given, so references are checked at the end.
class Names {
  public:
    /// Fails when the id is empty or was given before.
    void declare(const Node& id, Kind kind);
    /// The id, which must turn out to name something of that kind.
    std::string refer(const Node& id, Kind kind);
    /// As above; `because` says, after the kind, what needs it.
    void require(const Node& id, Kind kind, std::string because);
    /// Fails at the first reference that names nothing, or something else.
    void check() const;

  private:
    struct Reference {
        Node id;
        Kind kind;
        std::string because;
    };
    std::map<std::string, Kind> declared_;
    std::vector<Reference> references_;
};

}  // namespace quil::simulated
