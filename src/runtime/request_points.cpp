#include "runtime/request_points.h"

#include "accessibility/ax_elements.h"
#include "screen/display_geometry.h"

namespace quil {

std::optional<Point> pointMember(Runtime& runtime, const Parameters& parameters,
                                 std::string_view key) {
    const Json* object = parameters.object(key);
    if (!object) return {};
    return screenPoint(runtime.platform.displays(), *object);
}

std::optional<Point> elementOrPoint(Runtime& runtime, const Parameters& parameters) {
    if (const auto element = parameters.string("element")) {
        return axElementCenter(runtime.platform, runtime.lastAxSnapshot, *element);
    }
    return pointMember(runtime, parameters, "point");
}

}  // namespace quil
