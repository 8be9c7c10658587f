#include "platform/macos/ax_observation.h"

#include <algorithm>

namespace quil {

AxObservation::AxObservation(AxReads& reads, const ObservationPlan& plan, AxObservation*& slot)
    : reads_(reads), slot_(slot), attributes_(plan.attributes.begin(), plan.attributes.end()) {
    slot_ = this;
}

AxAnswer AxObservation::copyAttributeValue(const ElementRef& element, std::string_view attribute) {
    const auto known = std::find(attributes_.begin(), attributes_.end(), attribute);
    if (known != attributes_.end() && element != element_) readAhead(element);
    if (unreachable_) return {.code = kAxCannotComplete};
    if (known == attributes_.end() || answers_.empty()) {
        return noted(reads_.copyAttributeValue(element, attribute));
    }
    return answers_[static_cast<std::size_t>(known - attributes_.begin())];
}

AxAnswer AxObservation::copyActionNames(const ElementRef& element) {
    if (unreachable_) return {.code = kAxCannotComplete};
    return noted(reads_.copyActionNames(element));
}

void AxObservation::readAhead(const ElementRef& element) {
    element_ = element;
    answers_.clear();
    if (unreachable_) return;
    std::vector<AxAnswer> answers;
    const std::int32_t code = reads_.copyMultipleAttributeValues(element, attributes_, answers);
    unreachable_ = code == kAxCannotComplete;
    if (code == kAxSuccess && answers.size() == attributes_.size()) answers_ = std::move(answers);
}

AxAnswer AxObservation::noted(AxAnswer answer) {
    if (answer.code == kAxCannotComplete) unreachable_ = true;
    return answer;
}

}  // namespace quil
