// The instance variables of Foundation's classes, for the substitutes that make or read them.
// Included before any message is sent to one.
#pragma once

#import "substitute.h"

/// A class that adds nothing to what it is derived from.
#define EMPTY_CLASS(name, base) \
    @interface name : base      \
    @end                        \
    @implementation name        \
    @end

enum class NumberKind { integer, real, single, boolean, large, narrow };

@interface NSString () {
  @public
    std::u16string units;
}
@end
@interface NSNumber () {
  @public
    NumberKind kind;
    long long integer;  // of a large number the bits of an unsigned one
    double real;
}
+ (NSNumber*)of:(NumberKind)kind integer:(long long)integer real:(double)real;
@property(readonly) BOOL isReal;
@end
@interface NSArray () {
  @public
    std::vector<id> items;
}
@end
@interface NSDictionary () {
  @public
    std::vector<id> keys, values;
}
@end
@interface NSData () {
  @public
    std::string content;
}
@end
