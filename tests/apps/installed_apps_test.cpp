#include "apps/installed_apps.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

class InstalledApps : public testing::Test {
  protected:
    std::vector<std::string> names() {
        std::vector<std::string> names;
        for (const Json& app : installedApps(platform)) names.push_back(app["name"]);
        return names;
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
};

TEST_F(InstalledApps, DescribesRunningAndInstalledApplications) {
    desktop.application(1, "Running")
        .bundleIdentifier("org.run")
        .executablePath("/opt/run")
        .signing("TEAM", {});
    desktop.application(2, "Tool").localizedName({}).executablePath("/opt/tool");
    desktop.application(3, "Nameless").executablePath({});
    desktop.application(4, "Empty").bundleIdentifier("");
    desktop.application(5, "Helper").bundleIdentifier("org.helper").activationPolicy(1);
    desktop.bundle("/Applications/Run.app").identifier("org.run").displayName("Other name");
    desktop.bundle("/Applications/Both.app").identifier("org.both").displayName("Both").name("No");
    desktop.bundle("/System/Applications/Both.app").identifier("org.both").displayName("Later");
    desktop.bundle("/Applications/Cut.app.app").information("CFBundleName", 5);
    desktop.bundle("/Applications/Utilities/Broken.app").notABundle();
    desktop.bundle("/Applications/Named.app").name("Its name");
    desktop.bundle("/Applications/Shouting.APP");
    desktop.bundle("/Applications/Folder/Inside.app");
    desktop.bundle("/Users/me/Applications/Mine.app");
    desktop.unlistableFolders.insert("/System/Applications/Utilities");
    EXPECT_EQ(installedApps(platform), *parseJson(R"([
        {"appId": "/opt/tool", "name": "/opt/tool", "running": true, "executablePath": "/opt/tool"},
        {"appId": "org.both", "name": "Both", "running": false, "bundleIdentifier": "org.both",
         "executablePath": "/Applications/Both.app"},
        {"appId": "/Applications/Utilities/Broken.app", "name": "Broken", "running": false,
         "executablePath": "/Applications/Utilities/Broken.app"},
        {"appId": "/Applications/Cut.app.app", "name": "Cut", "running": false,
         "executablePath": "/Applications/Cut.app.app"},
        {"appId": "/Applications/Named.app", "name": "Its name", "running": false,
         "executablePath": "/Applications/Named.app"},
        {"appId": "org.run", "name": "Running", "running": true, "bundleIdentifier": "org.run",
         "executablePath": "/opt/run", "signingIdentity": "TEAM"}])"));
}

TEST_F(InstalledApps, ALaterRunningApplicationReplacesAnEarlierOneOfItsIdentifier) {
    desktop.application(1, "First").bundleIdentifier("org.same");
    desktop.application(2, "Second").bundleIdentifier("org.same");
    EXPECT_EQ(names(), std::vector<std::string>{"Second"});
}

TEST_F(InstalledApps, TheBundleSuffixIsThePlatforms) {
    desktop.bundleSuffix = ".desktop";
    desktop.applicationFolders = {"/usr/share/applications"};
    desktop.bundle("/usr/share/applications/edit.desktop");
    desktop.bundle("/usr/share/applications/Old.app");
    EXPECT_EQ(names(), std::vector<std::string>{"edit"});
    desktop.bundleSuffix = "";
    EXPECT_EQ(names(), (std::vector<std::string>{"edit.desktop", "Old.app"}));
}

TEST_F(InstalledApps, SortsByNameIgnoringCaseAndKeepsTheFirst500) {
    for (const char* name : {"beta", "Alpha", "alpha2"}) {
        desktop.bundle(std::string("/Applications/") + name + ".app");
    }
    EXPECT_EQ(names(), (std::vector<std::string>{"Alpha", "alpha2", "beta"}));
    for (int i = 999; i >= 400; --i) {
        desktop.bundle("/Applications/App" + std::to_string(i) + ".app");
    }
    const std::vector<std::string> all = names();
    ASSERT_EQ(all.size(), 500u);
    EXPECT_EQ(all[2], "App400");
    EXPECT_EQ(all.back(), "App897");
}

}  // namespace
}  // namespace quil
