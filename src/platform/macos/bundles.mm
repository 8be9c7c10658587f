#import "platform/macos/bundles.h"

#import <Foundation/Foundation.h>

#import "platform/macos/ns_strings.h"
#import "platform/macos/values.h"

namespace quil::macos {

std::vector<std::string> MacBundles::applicationFolders() {
    return {"/Applications", "/Applications/Utilities", "/System/Applications",
            "/System/Applications/Utilities"};
}

std::string MacBundles::bundleSuffix() {
    return ".app";
}

std::optional<std::vector<std::string>> MacBundles::contentsOfDirectory(std::string_view path) {
    NSArray<NSString*>* entries =
        [[NSFileManager defaultManager] contentsOfDirectoryAtPath:nsString(path) error:nil];
    if (!entries) return {};
    std::vector<std::string> names;
    for (NSString* name in entries) names.push_back(utf8(name));
    return names;
}

std::optional<Bundle> MacBundles::openBundle(std::string_view path) {
    NSBundle* bundle = [[NSBundle alloc] initWithURL:[NSURL fileURLWithPath:nsString(path)]];
    if (!bundle) return {};
    Bundle result{.bundleIdentifier = optionalUtf8(bundle.bundleIdentifier), .infoDictionary = {}};
    NSDictionary* information = bundle.infoDictionary;
    for (NSString* key in @[ @"CFBundleDisplayName", @"CFBundleName" ]) {
        if (auto value = valueOf((__bridge CFTypeRef)information[key])) {
            result.infoDictionary.emplace(utf8(key), std::move(*value));
        }
    }
    return result;
}

}  // namespace quil::macos
