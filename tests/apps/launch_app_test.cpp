#include "apps/launch_app.h"

#include <gtest/gtest.h>

#include "accessibility/ax_error.h"
#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

TEST(LaunchApp, OpensOrSaysWhyNot) {
    SimulatedDesktop desktop;
    SimulatedPlatform platform(desktop);
    desktop.bundle("/Applications/Notes.app").identifier("org.example.notes");
    desktop.bundle("/Applications/Stuck.app").identifier("org.example.stuck");
    desktop.bundle("/usr/share/applications/edit.desktop");
    desktop.on("openUrl").about("/Applications/Stuck.app").fails();
    const std::string onlyBundles = "launch_app only accepts .app bundles";
    struct Case {
        const char* suffix;
        std::string appId;
        std::string error;  // empty: it opens
    };
    const Case cases[] = {
        {".app", "org.example.notes", ""},
        {".app", "/Applications/Notes.app", ""},
        {".app", "/Applications/Notes.app/", onlyBundles},
        {".app", "/Applications/Notes.APP", onlyBundles},
        {".app", "/usr/bin/true", onlyBundles},
        {".app", "/usr/share/applications/edit.desktop", onlyBundles},
        {".desktop", "/usr/share/applications/edit.desktop", ""},
        {".desktop", "/Applications/Notes.app", ""},
        {".app", "/Applications/Missing.app", "launch failed: /Applications/Missing.app"},
        {".app", "org.example.stuck", "launch failed: org.example.stuck"},
        {".app", "missing.bundle.id", "application not found: missing.bundle.id"},
        {".app", "Notes.app", "application not found: Notes.app"},
        {".app", "", "application not found: "},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.appId);
        desktop.bundleSuffix = testCase.suffix;
        desktop.clearLog();
        try {
            launchApp(platform, testCase.appId);
            EXPECT_EQ(testCase.error, "");
            EXPECT_EQ(desktop.logLines().size(), 1u);
        } catch (const AxError& error) {
            EXPECT_EQ(error.message(), testCase.error);
            const bool failed = testCase.error.starts_with("launch failed");
            EXPECT_EQ(error.kind(), failed ? AxError::Kind::failed : AxError::Kind::unsupported);
            EXPECT_EQ(desktop.logLines().size(), failed ? 1u : 0u);
        }
    }
}

}  // namespace
}  // namespace quil
