// What stands behind CGEventRef and CGImageRef.
#pragma once

#import "substitute.h"

@interface EventObject : NSObject {
  @public
    quil::PostableEventRef posted;  // null of an event that a tap has got, which has the rest
    std::uint32_t type;
    quil::Point at;
    std::uint64_t timestamp, flags;
    std::int64_t keyCode, lines;
    std::optional<std::string> characters;
}
@end
@interface ImageObject : NSObject {
  @public
    std::unique_ptr<quil::CapturedImage> image;
}
@end
