#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/simulated/element.h"

namespace quil::simulated {

/// How a call of the platform is to fail.
struct Failure {
    /// The result code of a call that gives one. 0 means that the call succeeds but gives no
    /// object. Calls without a code give nothing, null, false or an empty list.
    std::int32_t code = 0;
};

/// What is to happen when the runtime makes a certain call of the platform. Calls carry the names
/// of the platform interfaces' operations. Several rules may apply to one call.
class Rule {
  public:
    explicit Rule(std::string_view call) : call_(call) {}

    /// Only the n-th call, counting from 1 those that come after the rule was made.
    Rule& nth(int n);
    /// The n-th call and all later ones.
    Rule& from(int n);
    /// Only calls about that: the name of an attribute or action, the path of a bundle, the type
    /// of an event ("leftMouseDown", "keyUp"), the type of pasteboard contents, the id of an
    /// element. Given several times, only calls about all of them.
    Rule& about(std::string subject);

    /// The call fails. Without a code it fails as is usual for it.
    Rule& fails(std::optional<std::int32_t> code = {});
    /// The call takes that many seconds on the desktop's clock.
    Rule& takes(double seconds);
    /// The desktop changes just before the call returns.
    Rule& changes(Change change);

    /// Counts a call that was made. Whether the rule applies to it.
    bool applies(std::string_view call, std::initializer_list<std::string_view> subjects);
    const std::optional<Failure>& failure() const { return failure_; }
    double seconds() const { return seconds_; }
    const Change& change() const { return change_; }

  private:
    std::string call_;
    std::vector<std::string> subjects_;
    int first_ = 1;
    std::optional<int> last_;
    int seen_ = 0;
    std::optional<Failure> failure_;
    double seconds_ = 0;
    Change change_;
};

/// What a rule can single out among the calls of one name.
enum class CallSubjects {
    none,
    events,    ///< by the name of an event type
    elements,  ///< by an element's id
    others,    ///< by names that the desktop does not list: attributes, actions, paths, types
};

CallSubjects subjectsOf(std::string_view call);

/// The names of all calls that rules can be about.
const std::vector<std::string_view>& callNames();

/// The code with which a call fails when its rule gives none.
std::int32_t usualFailureCode(std::string_view call);

}  // namespace quil::simulated
