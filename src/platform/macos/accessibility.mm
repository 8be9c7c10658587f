#import "platform/macos/accessibility.h"

#import <ApplicationServices/ApplicationServices.h>

#import "platform/macos/ax_change_watch.h"
#import "platform/macos/ns_strings.h"
#import "platform/macos/values.h"

namespace quil::macos {

ElementRef MacAccessibility::createApplication(std::int32_t pid) {
    return elementOf(CfRef<AXUIElementRef>::adopt(AXUIElementCreateApplication(pid)));
}

std::int32_t MacAccessibility::copyAttributeValue(const ElementRef& element,
                                                  std::string_view attribute,
                                                  std::optional<Value>& value) {
    AxResult result = observation_ ? observation_->copyAttributeValue(element, attribute)
                                   : calls_.copyAttributeValue(element, attribute);
    if (result.code == kAxSuccess) value = std::move(result.value);
    return result.code;
}

std::int32_t MacAccessibility::copyActionNames(const ElementRef& element,
                                               std::optional<Value>& names) {
    AxResult result =
        observation_ ? observation_->copyActionNames(element) : calls_.copyActionNames(element);
    if (result.code == kAxSuccess) names = std::move(result.value);
    return result.code;
}

std::int32_t MacAccessibility::performAction(const ElementRef& element, std::string_view action) {
    AXUIElementRef handle = handleOf(element);
    if (!handle) return kAxInvalidUIElement;
    NSString* name = nsString(action);
    return AXUIElementPerformAction(handle, (__bridge CFStringRef)name);
}

std::int32_t MacAccessibility::setAttributeValue(const ElementRef& element,
                                                 std::string_view attribute, const Value& value) {
    AXUIElementRef handle = handleOf(element);
    if (!handle) return kAxInvalidUIElement;
    const auto object = objectOf(value);
    if (!object) return kAxIllegalArgument;
    NSString* name = nsString(attribute);
    return AXUIElementSetAttributeValue(handle, (__bridge CFStringRef)name, object.get());
}

std::unique_ptr<Observation> MacAccessibility::beginObservation(const ObservationPlan& plan) {
    return std::make_unique<AxObservation>(calls_, plan, observation_);
}

std::unique_ptr<ChangeWatch> MacAccessibility::watchChanges(std::int32_t pid) {
    return AxChangeWatch::begin(pid);
}

}  // namespace quil::macos
