#pragma once

#import <ApplicationServices/ApplicationServices.h>

#include "platform/macos/cf_ref.h"
#include "platform/value.h"

namespace quil::macos {

/// That element of another application; may be null.
ElementRef elementOf(CfRef<AXUIElementRef> element);

/// The platform's element; null for the element of what can be no application.
AXUIElementRef handleOf(const ElementRef& element);

/// The object as a value; nothing for null. An integer above 2⁶³ − 1 is the text that
/// `stringValue` writes of it. Strings, booleans, numbers, elements, points, sizes,
/// lists, and dictionaries whose keys are strings keep their content, anything else is opaque.
std::optional<Value> valueOf(CFTypeRef object);

/// The object that stands for a string, a boolean or a number; null for any other value.
CfRef<CFTypeRef> objectOf(const Value& value);

}  // namespace quil::macos
