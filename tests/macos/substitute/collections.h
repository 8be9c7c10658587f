// The instance variables of Foundation's classes, for the substitutes that make or read them.
// Included before any message is sent to one.
#pragma once

#import "substitute.h"

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
+ (NSNumber*)of:(NumberKind)kind;
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
@interface NSURL () {
  @public
    std::string text;
}
@end
