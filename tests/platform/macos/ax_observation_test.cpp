#include "platform/macos/ax_observation.h"

#include <gtest/gtest.h>

#include "accessibility/ax_snapshot.h"
#include "platform/simulated/platform.h"

namespace quil {
namespace {

/// A platform that can read several attributes at once: the simulated elements, whose round trips
/// are counted and whose applications can refuse or hang.
class CombinedReads : public Accessibility, public AxReads {
  public:
    explicit CombinedReads(Accessibility& elements) : elements_(elements) {}

    int combined = 0;
    int single = 0;
    /// The result of the combined read of an element; the length of its list is cut by one when
    /// `incomplete`.
    std::function<std::int32_t(const ElementRef&)> refusal = [](const auto&) { return kAxSuccess; };
    bool incomplete = false;
    /// The round trip, counted from 1, from which on nothing is completed, and how long each such
    /// trip takes.
    int hangsFrom = 1 << 30;
    double seconds = 6;

    // As reads.
    AxResult copyAttributeValue(const ElementRef& element, std::string_view attribute) override {
        ++single;
        return hangs() ? AxResult{.code = kAxCannotComplete} : readSingly(element, attribute);
    }
    AxResult copyActionNames(const ElementRef& element) override {
        ++single;
        if (hangs()) return {.code = kAxCannotComplete};
        AxResult result;
        result.code = elements_.copyActionNames(element, result.value);
        return result;
    }
    std::int32_t copyMultipleAttributeValues(const ElementRef& element,
                                             const std::vector<std::string>& attributes,
                                             std::vector<AxResult>& results) override {
        ++combined;
        if (hangs()) return kAxCannotComplete;
        for (const auto& attribute : attributes) results.push_back(readSingly(element, attribute));
        if (incomplete) results.pop_back();
        return refusal(element);
    }

    std::int32_t processOf(const ElementRef& element) override {
        const auto* own = dynamic_cast<const simulated::Element*>(element.get());
        return own && own->id() == "web" ? 300 : 100;
    }
    double uptime() override { return uptime_; }

    // As the service.
    ElementRef createApplication(std::int32_t pid) override {
        return elements_.createApplication(pid);
    }
    std::int32_t copyAttributeValue(const ElementRef& element, std::string_view attribute,
                                    std::optional<Value>& value) override {
        if (!observation_) return elements_.copyAttributeValue(element, attribute, value);
        AxResult result = observation_->copyAttributeValue(element, attribute);
        value = result.value;
        return result.code;
    }
    std::int32_t copyActionNames(const ElementRef& element, std::optional<Value>& names) override {
        AxResult result = observation_->copyActionNames(element);
        names = result.value;
        return result.code;
    }
    std::int32_t performAction(const ElementRef&, std::string_view) override { return kAxFailure; }
    std::int32_t setAttributeValue(const ElementRef&, std::string_view, const Value&) override {
        return kAxFailure;
    }
    std::unique_ptr<Observation> beginObservation(const ObservationPlan& plan) override {
        return std::make_unique<AxObservation>(*this, plan, observation_);
    }
    std::unique_ptr<ChangeWatch> watchChanges(std::int32_t) override { return nullptr; }

  private:
    bool hangs() {
        const bool now = combined + single >= hangsFrom;
        if (now) uptime_ += seconds;
        return now;
    }
    AxResult readSingly(const ElementRef& element, std::string_view attribute) {
        AxResult result;
        result.code = elements_.copyAttributeValue(element, attribute, result.value);
        return result;
    }

    Accessibility& elements_;
    double uptime_ = 0;
    AxObservation* observation_ = nullptr;
};

class AxObservationTest : public testing::Test {
  protected:
    AxObservationTest() {
        auto& window = application.window("Main", {0, 25, 800, 600});
        auto& group = window.element("AXGroup").identifier("g");
        group.element("AXButton", "OK").enabled(true).bounds({10, 40, 80, 24}).action("AXPress");
        group.element("AXSlider").value(0.5).description("volume");
        group.element("AXTextField").value("text").withoutAttribute("AXTitle");
        window.element("AXCheckBox").value(1);
    }

    AxSnapshot observe(Accessibility& accessibility) {
        return *axSnapshot(accessibility, last, 100, kAxMaximumNodes, kAxMaximumChars);
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    simulated::Application& application = desktop.application(100, "Notes");
    CombinedReads reads{platform.accessibility()};
    LastAxSnapshot last;
};

TEST_F(AxObservationTest, OneRoundTripForAllAttributesOfAnElementAndTheSameResult) {
    const AxSnapshot snapshot = observe(reads);
    EXPECT_EQ(snapshot.nodes.size(), 6u);
    EXPECT_EQ(reads.combined, 6);
    EXPECT_EQ(reads.single, 6);  // the action names
    EXPECT_EQ(snapshot.revision, observe(platform.accessibility()).revision);
}

TEST_F(AxObservationTest, AnElementThatRefusesTheCombinedReadIsReadSingly) {
    const std::string revision = observe(platform.accessibility()).revision;
    int element = 0;
    reads.refusal = [&](const auto&) { return ++element == 2 ? kAxNotImplemented : kAxSuccess; };
    EXPECT_EQ(observe(reads).revision, revision);
    EXPECT_EQ(reads.combined, 6);
    EXPECT_EQ(reads.single, 6 + 8);  // without a position nobody asks for the size

    reads.refusal = [](const auto&) { return kAxSuccess; };
    reads.incomplete = true;
    EXPECT_EQ(observe(reads).revision, revision);
}

TEST_F(AxObservationTest, AHungApplicationCostsOneWait) {
    for (const int hangsFrom : {1, 2, 5, 8}) {  // odd: a combined read, even: action names
        CombinedReads hanging(platform.accessibility());
        hanging.hangsFrom = hangsFrom;
        const AxSnapshot snapshot = observe(hanging);
        EXPECT_EQ(hanging.combined + hanging.single, hangsFrom);
        // What was read before stays, and children that were known by then are recorded unread.
        ASSERT_EQ(snapshot.nodes.size(), hangsFrom <= 2 ? 1u : 6u);
        EXPECT_EQ(snapshot.nodes[0].role, hangsFrom == 1 ? "AXUnknown" : "AXWindow");
        EXPECT_EQ(snapshot.nodes.back().role, hangsFrom == 2 ? "AXWindow" : "AXUnknown");
    }
    // What fails at once is about that element only: all the others are asked.
    CombinedReads quick(platform.accessibility());
    quick.hangsFrom = 3;
    quick.seconds = 0.2;
    observe(quick);
    EXPECT_EQ(quick.combined, 3);  // the window and its two children
    // The next observation asks again.
    EXPECT_EQ(observe(reads).nodes.size(), 6u);
}

}  // namespace
}  // namespace quil
