#include "platform/macos/ax_observation.h"

#include <algorithm>

namespace quil {
namespace {

/// From when on a read that could not be completed has waited for its process, in seconds. The
/// system gives up after some seconds; errors of other kinds come within milliseconds.
constexpr double kLong = 1;

}  // namespace

AxObservation::AxObservation(AxReads& reads, const ObservationPlan& plan, AxObservation*& slot)
    : reads_(reads), slot_(slot), attributes_(plan.attributes.begin(), plan.attributes.end()) {
    slot_ = this;
}

AxResult AxObservation::copyAttributeValue(const ElementRef& element, std::string_view attribute) {
    const auto known = std::find(attributes_.begin(), attributes_.end(), attribute);
    if (known != attributes_.end() && element != element_) readAhead(element);
    if (hangs(element)) return {.code = kAxCannotComplete};
    if (known != attributes_.end() && !results_.empty()) {
        return results_[static_cast<std::size_t>(known - attributes_.begin())];
    }
    AxResult result;
    watched(element, [&] {
        result = reads_.copyAttributeValue(element, attribute);
        return result.code;
    });
    return result;
}

AxResult AxObservation::copyActionNames(const ElementRef& element) {
    if (hangs(element)) return {.code = kAxCannotComplete};
    AxResult result;
    watched(element, [&] {
        result = reads_.copyActionNames(element);
        return result.code;
    });
    return result;
}

void AxObservation::readAhead(const ElementRef& element) {
    element_ = element;
    results_.clear();
    if (hangs(element)) return;
    watched(element, [&] {
        std::vector<AxResult> results;
        const std::int32_t code = reads_.copyMultipleAttributeValues(element, attributes_, results);
        if (code == kAxSuccess && results.size() == attributes_.size()) {
            results_ = std::move(results);
        }
        return code;
    });
}

bool AxObservation::hangs(const ElementRef& element) {
    return !hanging_.empty() && hanging_.contains(reads_.processOf(element));
}

template <typename Read>
void AxObservation::watched(const ElementRef& element, const Read& read) {
    const double begun = reads_.uptime();
    if (read() == kAxCannotComplete && reads_.uptime() - begun >= kLong) {
        hanging_.insert(reads_.processOf(element));
    }
}

}  // namespace quil
