#include "target/capture_target.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

class CaptureTargetTest : public testing::Test {
  protected:
    Json target() { return targetDictionary(frontmostTarget(platform)); }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
};

TEST_F(CaptureTargetTest, NothingIsFrontmost) {
    EXPECT_EQ(target(), Json::object());
}

TEST_F(CaptureTargetTest, AbsentFactsLeaveTheirKeysOut) {
    auto& application = desktop.application(100, "Notes").activate();
    application.localizedName({}).bundleIdentifier({}).executablePath({});
    EXPECT_EQ(target(), *parseJson(R"({"pid": 100})"));
    application.bundleIdentifier("org.example.notes").executablePath("/opt/notes");
    application.signing("", "org.example.signed");
    simulated::Element& window = application.window("", {0, 0, 10, 10});
    EXPECT_EQ(target(), *parseJson(R"({"pid": 100, "bundleIdentifier": "org.example.notes",
        "executablePath": "/opt/notes", "windowTitle": "",
        "signingIdentity": "org.example.signed"})"));
    window.attribute("AXTitle", 5);
    EXPECT_FALSE(target().contains("windowTitle"));
    window.title("Main");
    EXPECT_EQ(target()["windowTitle"], "Main");
    application.attribute("AXFocusedWindow", "not an element");
    EXPECT_FALSE(target().contains("windowTitle"));
}

TEST_F(CaptureTargetTest, SigningIdentity) {
    auto& application = desktop.application(100, "Notes");
    const auto identity = [&] { return signingIdentity(platform.codeSigning(), 100); };
    EXPECT_FALSE(identity());
    application.signing("TEAM", "id");
    EXPECT_EQ(identity(), "TEAM");
    application.signing({}, "");
    EXPECT_EQ(identity(), "");
    application.signingInformation("not a dictionary");
    EXPECT_FALSE(identity());
    application.signing("TEAM", "id");
    for (const char* call :
         {"copyGuestWithAttributes", "copyStaticCode", "copySigningInformation"}) {
        desktop.on(call).nth(1).fails();
        EXPECT_FALSE(identity()) << call;
        desktop.on(call).nth(1).fails(0);  // success, but nothing comes back
        EXPECT_FALSE(identity()) << call;
        EXPECT_EQ(identity(), "TEAM") << call;
    }
}

}  // namespace
}  // namespace quil
