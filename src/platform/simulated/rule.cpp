#include "platform/simulated/rule.h"

#include <algorithm>

#include "platform/accessibility.h"

namespace quil::simulated {
namespace {

/// kCGErrorFailure of the Quartz services.
constexpr std::int32_t kDisplayFailure = 1000;
/// errSecCSUnsigned: the code has no signature.
constexpr std::int32_t kSigningFailure = -67062;

struct Call {
    std::string_view name;
    std::int32_t failureCode = 0;  // of calls that give one
    CallSubjects subjects = CallSubjects::none;
};

constexpr Call kCalls[] = {
    {"isProcessTrusted"},
    {"preflightScreenCaptureAccess"},
    {"preflightListenEventAccess"},
    {"requestListenEventAccess"},
    {"getActiveDisplayList", kDisplayFailure},
    {"displayBounds"},
    {"screens"},
    {"copyWindowInfo"},
    {"activateWindow"},
    {"activeWindow"},
    {"frontmostApplication"},
    {"runningApplicationWithProcessIdentifier"},
    {"runningApplications"},
    {"urlForApplicationWithBundleIdentifier", 0, CallSubjects::others},
    {"openUrl", 0, CallSubjects::others},
    {"contentsOfDirectory", 0, CallSubjects::others},
    {"openBundle", 0, CallSubjects::others},
    {"copyGuestWithAttributes", kSigningFailure},
    {"copyStaticCode", kSigningFailure},
    {"copySigningInformation", kSigningFailure},
    {"copyAttributeValue", kAxCannotComplete, CallSubjects::others},
    {"copyActionNames", kAxCannotComplete, CallSubjects::elements},
    {"performAction", kAxCannotComplete, CallSubjects::others},
    {"setAttributeValue", kAxCannotComplete, CallSubjects::others},
    {"beginObservation"},
    {"watchChanges"},
    {"getShareableContent"},
    {"captureImage"},
    {"captureDisplayImage"},
    {"pngRepresentation"},
    {"createSource"},
    {"createMouseEvent", 0, CallSubjects::events},
    {"createScrollWheelEvent"},
    {"createKeyboardEvent", 0, CallSubjects::events},
    {"post", 0, CallSubjects::events},
    {"stringForType", 0, CallSubjects::others},
    {"clearContents"},
    {"setString", 0, CallSubjects::others},
    {"createTap"},
    {"createRunLoopSource"},
    {"startThread", 0, CallSubjects::others},
};

}  // namespace

Rule& Rule::nth(int n) {
    first_ = n;
    last_ = n;
    return *this;
}

Rule& Rule::from(int n) {
    first_ = n;
    last_.reset();
    return *this;
}

Rule& Rule::about(std::string subject) {
    subjects_.push_back(std::move(subject));
    return *this;
}

Rule& Rule::fails(std::optional<std::int32_t> code) {
    failure_ = Failure{code.value_or(usualFailureCode(call_))};
    return *this;
}

Rule& Rule::takes(double seconds) {
    seconds_ = seconds;
    return *this;
}

Rule& Rule::changes(Change change) {
    change_ = std::move(change);
    return *this;
}

bool Rule::applies(std::string_view call, std::initializer_list<std::string_view> subjects) {
    if (call != call_) return false;
    for (const std::string& subject : subjects_) {
        if (std::ranges::find(subjects, subject) == subjects.end()) return false;
    }
    ++seen_;
    return seen_ >= first_ && (!last_ || seen_ <= *last_);
}

CallSubjects subjectsOf(std::string_view call) {
    const auto found = std::ranges::find(kCalls, call, &Call::name);
    return found == std::end(kCalls) ? CallSubjects::none : found->subjects;
}

const std::vector<std::string_view>& callNames() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> result;
        for (const Call& call : kCalls) result.push_back(call.name);
        return result;
    }();
    return names;
}

std::int32_t usualFailureCode(std::string_view call) {
    const auto found = std::ranges::find(kCalls, call, &Call::name);
    return found == std::end(kCalls) ? 0 : found->failureCode;
}

}  // namespace quil::simulated
