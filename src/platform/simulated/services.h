#pragma once

#include <atomic>

#include "platform/platform.h"
#include "platform/simulated/desktop.h"

/// The platform services of a simulated desktop, but for event taps, streams and threads. Each call
/// takes the desktop's lock, applies the rules about it, and returns what is in the desktop's
/// state.
namespace quil::simulated {

/// What every service holds. The desktop outlives it.
class Service {
  protected:
    explicit Service(SimulatedDesktop& desktop) : desktop_(desktop) {}
    SimulatedDesktop& desktop_;
};

class SimulatedPermissions : public Permissions, Service {
  public:
    explicit SimulatedPermissions(SimulatedDesktop& desktop) : Service(desktop) {}
    bool isProcessTrusted() override;
    bool preflightScreenCaptureAccess() override;
    bool preflightListenEventAccess() override;
    bool requestListenEventAccess() override;
};

class SimulatedDisplays : public Displays, Service {
  public:
    explicit SimulatedDisplays(SimulatedDesktop& desktop) : Service(desktop) {}
    std::int32_t getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                      std::uint32_t* count) override;
    Rect displayBounds(std::uint32_t display) override;
    std::uint32_t mainDisplayId() override;
    std::vector<Screen> screens() override;
};

class SimulatedWindowList : public WindowList, Service {
  public:
    explicit SimulatedWindowList(SimulatedDesktop& desktop) : Service(desktop) {}
    std::optional<Value> copyWindowInfo(std::uint32_t options,
                                        std::uint32_t relativeToWindow) override;
    bool activateWindow(std::int64_t number) override;
    std::optional<std::int64_t> activeWindow() override;
};

class SimulatedWorkspace : public Workspace, Service {
  public:
    explicit SimulatedWorkspace(SimulatedDesktop& desktop) : Service(desktop) {}
    std::optional<RunningApplication> frontmostApplication() override;
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(
        std::int32_t pid) override;
    std::vector<RunningApplication> runningApplications() override;
    std::optional<std::string> urlForApplicationWithBundleIdentifier(
        std::string_view bundleIdentifier) override;
    bool openUrl(std::string_view path) override;
};

class SimulatedCodeSigning : public CodeSigning, Service {
  public:
    explicit SimulatedCodeSigning(SimulatedDesktop& desktop) : Service(desktop) {}
    std::int32_t copyGuestWithAttributes(const Value::Dictionary& attributes, std::uint32_t flags,
                                         SigningCodeRef& guest) override;
    std::int32_t copyStaticCode(const SigningCodeRef& guest, std::uint32_t flags,
                                SigningCodeRef& staticCode) override;
    std::int32_t copySigningInformation(const SigningCodeRef& staticCode, std::uint32_t flags,
                                        std::optional<Value>& information) override;
};

class SimulatedAccessibility : public Accessibility, Service {
  public:
    explicit SimulatedAccessibility(SimulatedDesktop& desktop) : Service(desktop) {}
    ElementRef createApplication(std::int32_t pid) override;
    std::int32_t copyAttributeValue(const ElementRef& element, std::string_view attribute,
                                    std::optional<Value>& value) override;
    std::int32_t copyActionNames(const ElementRef& element, std::optional<Value>& names) override;
    std::int32_t performAction(const ElementRef& element, std::string_view action) override;
    std::int32_t setAttributeValue(const ElementRef& element, std::string_view attribute,
                                   const Value& value) override;
    std::unique_ptr<Observation> beginObservation(const ObservationPlan& plan) override;
    std::unique_ptr<ChangeWatch> watchChanges(std::int32_t pid) override;
};

class SimulatedScreenCapture : public ScreenCapture, Service {
  public:
    explicit SimulatedScreenCapture(SimulatedDesktop& desktop) : Service(desktop) {}
    std::optional<ShareableContent> getShareableContent(bool excludingDesktopWindows,
                                                        bool onScreenWindowsOnly) override;
    std::unique_ptr<CapturedImage> captureImage(const ShareableWindow& window,
                                                const StreamConfiguration& configuration) override;
    std::unique_ptr<CapturedImage> captureDisplayImage(
        const ShareableDisplay& display, const StreamConfiguration& configuration) override;
    std::string pngRepresentation(const CapturedImage& image) override;
};

class SimulatedEventPosting : public EventPosting, Service {
  public:
    explicit SimulatedEventPosting(SimulatedDesktop& desktop) : Service(desktop) {}
    std::unique_ptr<EventSource> createSource(std::int32_t state) override;
    PostableEventRef createMouseEvent(EventSource* source, std::uint32_t type, Point point,
                                      std::uint32_t button) override;
    PostableEventRef createScrollWheelEvent(EventSource* source, std::uint32_t units,
                                            std::uint32_t wheelCount, std::int32_t wheel1,
                                            std::int32_t wheel2, std::int32_t wheel3) override;
    PostableEventRef createKeyboardEvent(EventSource* source, std::uint16_t keyCode,
                                         bool keyDown) override;
    void setLocation(PostableEvent& event, Point point) override;
    void setFlags(PostableEvent& event, std::uint64_t flags) override;
    void setIntegerValueField(PostableEvent& event, std::uint32_t field,
                              std::int64_t value) override;
    void keyboardSetUnicodeString(PostableEvent& event, std::u16string_view text) override;
    void post(std::uint32_t tapLocation, const PostableEvent& event) override;
};

class SimulatedPasteboard : public Pasteboard, Service {
  public:
    explicit SimulatedPasteboard(SimulatedDesktop& desktop) : Service(desktop) {}
    std::optional<std::string> stringForType(std::string_view type) override;
    void clearContents() override;
    bool setString(std::string_view text, std::string_view type) override;
};

class SimulatedBundles : public Bundles, Service {
  public:
    explicit SimulatedBundles(SimulatedDesktop& desktop) : Service(desktop) {}
    std::vector<std::string> applicationFolders() override;
    std::string bundleSuffix() override;
    std::optional<std::vector<std::string>> contentsOfDirectory(std::string_view path) override;
    std::optional<Bundle> openBundle(std::string_view path) override;
};

/// Compares letter by letter in lower case, as an English desktop does for English names.
class SimulatedCollation : public Collation {
  public:
    int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) override;
};

class SimulatedClock : public Clock, Service {
  public:
    explicit SimulatedClock(SimulatedDesktop& desktop) : Service(desktop) {}
    double timeIntervalSince1970() override;
    double systemUptime() override;
    void sleepMicroseconds(std::uint32_t microseconds) override { sleep(microseconds); }
    void sleepStep(std::uint32_t microseconds, double end) override;
    /// Counts up, so that results are repeatable.
    std::string uuidString() override;

  private:
    void sleep(std::uint64_t microseconds);

    std::atomic<unsigned> uuids_ = 0;
};

}  // namespace quil::simulated
