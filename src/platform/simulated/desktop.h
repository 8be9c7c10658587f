#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bundles.h"
#include "platform/displays.h"
#include "platform/simulated/application.h"
#include "platform/simulated/clock.h"
#include "platform/simulated/event_taps.h"
#include "platform/simulated/log.h"
#include "platform/simulated/rule.h"
#include "platform/simulated/user.h"

namespace quil {

/// A desktop in memory. `SimulatedPlatform` shows it to a runtime.
///
///     SimulatedDesktop desktop;
///     auto& notes = desktop.application(100, "Notes").bundleIdentifier("com.example.notes");
///     auto& window = notes.window("Main", {0, 25, 800, 600});
///     auto& ok = window.element("AXButton", "OK").bounds({10, 40, 80, 24});
///     ok.action("AXPress", [&](auto&) { ok.enabled(false); });
///     desktop.on("getActiveDisplayList").nth(2).fails();
///
/// A new desktop has all permissions, one display (id 1, 1440 × 900 points, "Built-in Display"), an
/// empty pasteboard, the four application folders of a Mac, empty, and no application. The first
/// application that is added is the frontmost one, its first window the focused one.
///
/// Whatever the runtime calls takes the desktop's lock for the length of the call; changes made by
/// rules, actions and times run inside it. A test that changes or reads the desktop while a runtime
/// works on other threads does it inside `locked`.
class SimulatedDesktop {
  public:
    using Change = simulated::Change;

    SimulatedDesktop();
    ~SimulatedDesktop();
    SimulatedDesktop(const SimulatedDesktop&) = delete;
    SimulatedDesktop& operator=(const SimulatedDesktop&) = delete;

    // Permissions.
    struct PermissionState {
        bool accessibility = true;
        bool screenRecording = true;
        bool inputMonitoring = true;
        /// What the user decides when asked for Input Monitoring.
        bool grantsInputMonitoring = false;
    };
    PermissionState permissions;

    // Displays.
    struct Display {
        std::uint32_t id = 0;
        Rect bounds;
        /// Without a name, no screen knows the display.
        std::optional<std::string> name;
    };
    /// The active displays, the main one first.
    std::vector<Display> displays;
    /// Entries at the head of the list of screens, before those of the displays.
    std::vector<Screen> extraScreens;
    /// What the main display is when no display is active.
    Display sleepingMainDisplay;

    // Applications and windows.
    /// Starts an application; it belongs to the desktop.
    simulated::Application& application(std::int32_t pid, std::string name);
    /// The running application with that process id, or null.
    simulated::Application* findApplication(std::int32_t pid);
    const std::vector<std::shared_ptr<simulated::Application>>& applications() const {
        return applications_;
    }
    /// Brings an application to the front or, with null, none.
    void frontmost(simulated::Application* application) { frontmost_ = application; }
    simulated::Application* frontmost() const { return frontmost_; }
    /// A window without an owning application, behind all others.
    simulated::Window& window(std::string title, Rect frame);
    /// All windows, front to back.
    std::vector<simulated::Window*> windows() const;
    /// Puts a window in front of all others.
    void raise(simulated::Window& window);
    /// Replaces the whole window list, by something that is no list of dictionaries for instance.
    std::optional<Value> windowListOverride;
    /// The element with that id (`Element::id`), or null.
    simulated::Element* find(std::string_view id);

    // Pasteboard: contents by type.
    std::map<std::string, std::string, std::less<>> pasteboard;
    /// The plain text on the pasteboard.
    std::optional<std::string> pasteboardText() const;

    // Applications on disk.
    struct BundleFile {
        std::string path;
        Bundle bundle;
        /// False: listed, but it cannot be opened as a bundle.
        bool isBundle = true;
        /// What opening it does; by default a running application of it comes to the front.
        Change launch;
        BundleFile& identifier(std::string text);
        BundleFile& displayName(std::string text);
        BundleFile& name(std::string text);
        BundleFile& information(std::string key, Value value);
        BundleFile& whenLaunched(Change change);
    };
    /// The folders that the applications are looked for in.
    std::vector<std::string> applicationFolders;
    std::string bundleSuffix = ".app";
    /// Folders that cannot be listed.
    std::set<std::string, std::less<>> unlistableFolders;
    /// An entry of the folder that its path names, behind the ones already there.
    BundleFile& bundle(std::string path);
    const std::deque<BundleFile>& bundles() const { return bundles_; }

    // Time, and the user.
    simulated::DesktopClock& clock() { return clock_; }
    simulated::User& user() { return user_; }
    simulated::SimulatedEventTaps& eventTaps() { return eventTaps_; }
    /// Lets time pass: what is due happens at its own time, and the taps see it.
    void pass(double seconds) { pass(simulated::DesktopClock::nanoseconds(seconds)); }
    void pass(simulated::DesktopClock::Nanoseconds time);
    /// When the next change of `at` is due; nothing when there is none.
    std::optional<simulated::DesktopClock::Nanoseconds> nextChange() const;
    /// Lets time pass until the next change that is due, that many seconds at the most. Whether one
    /// has been made.
    bool passUntilChange(double seconds);
    /// Waits until the taps have seen what the user did.
    void settle() { eventTaps_.settle(); }

    // Rules, and changes at their time.
    /// What is to happen at that call of the platform (`simulated::callNames`). Throws
    /// std::invalid_argument for a name that is no call.
    simulated::Rule& on(std::string_view call);
    simulated::Rule& add(simulated::Rule rule) { return rules_.emplace_back(std::move(rule)); }
    /// Makes the change once that many seconds have passed since the desktop started.
    void at(double seconds, Change change);
    /// Makes the change just before the n-th line of standard input (from 1) reaches the runtime.
    void onRequest(int n, Change change);

    // What was done to the desktop.
    /// How often the runtime made that call.
    int callCount(std::string_view call) const;
    /// Told of everything that is done, as it happens.
    void observeLog(std::function<void(const simulated::LogEntry&)> observer);
    /// Whether what is posted has its usual effects (input_effects.h); true at first.
    bool postedInputActs = true;

    /// The element with an action "AXPress" on which the left button was last pressed.
    simulated::Element* pressedButton = nullptr;

    /// Runs `body` while no runtime can look at the desktop or change it.
    void locked(const std::function<void()>& body) const;

    // For the services.
    std::unique_lock<std::recursive_mutex> lock() const { return std::unique_lock(mutex_); }
    /// Counts a call and applies its rules. How it is to fail, if it is.
    std::optional<simulated::Failure> enter(std::string_view call,
                                            std::initializer_list<std::string_view> subjects = {});
    /// Tells the log's observer of something that is done.
    void record(decltype(simulated::LogEntry::what) what);
    /// A line of standard input is about to reach the runtime.
    void requestArrives();
    std::uint32_t nextWindowNumber() { return nextWindowNumber_++; }
    /// Puts a window behind all others.
    void addWindow(std::shared_ptr<simulated::Window> window);
    void applicationEnded(simulated::Application& application);

  private:
    struct TimedChange {
        simulated::DesktopClock::Nanoseconds time{0};
        Change change;
    };
    void makeDueChanges();

    mutable std::recursive_mutex mutex_;
    simulated::DesktopClock clock_;
    simulated::SimulatedEventTaps eventTaps_;
    simulated::User user_;
    std::vector<std::shared_ptr<simulated::Application>> applications_;
    std::vector<std::shared_ptr<simulated::Application>> endedApplications_;
    simulated::Application* frontmost_ = nullptr;
    std::vector<std::shared_ptr<simulated::Window>> windows_;  // front to back
    std::uint32_t nextWindowNumber_ = 1;
    std::deque<BundleFile> bundles_;
    std::deque<simulated::Rule> rules_;
    std::vector<TimedChange> timedChanges_;
    std::multimap<int, Change> requestChanges_;
    int requests_ = 0;
    std::map<std::string, int, std::less<>> callCounts_;
    std::function<void(const simulated::LogEntry&)> logObserver_;
};

}  // namespace quil
