// quil-mac-fake: the Mac backend and the runtime, in a process that answers request lines, on the
// substitutes of the frameworks and over the desktop of a scenario.
//
//     quil-mac-fake SCENARIO.json
//
// The scenario is one of quil-sim's with one more member: "mac": {"version": 13, "delays":
// {"captureImage": 0.5}, "silentErrors": true}; see substitute.h. A broken rule of the platform
// ends the process with a line "violation: …" on standard error; objects that are left at the end
// make it end with the status 3.
#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

#include "platform/macos/platform.h"
#include "platform/simulated/scenario/log_file.h"
#include "platform/simulated/scenario/scenario.h"
#include "run_loops.h"
#include "runtime/process.h"

using namespace quil;
using namespace quil::substitute;

namespace quil::substitute {

Mac mac;
SimulatedPlatform* services = nullptr;

namespace {

const pthread_t mainThread = pthread_self();

double delay(std::string_view name) {
    const auto found = mac.delays.find(name);
    return found == mac.delays.end() ? 0 : found->second;
}

/// Sleeps in real time, which the substitute of nanosleep does not.
void reallySleep(double seconds) {
    usleep(static_cast<useconds_t>(seconds * 1e6));
}

/// Threads that have been started and are not done with what can end.
struct Threads {
    std::mutex mutex;
    std::condition_variable changed;
    int busy = 0;
    /// A thread waits for what never comes: what it holds stays.
    bool stuck = false;

    void change(int by) {
        const std::lock_guard guard(mutex);
        busy += by;
        changed.notify_all();
    }
} threads;

}  // namespace

bool onMainThread() {
    return pthread_equal(pthread_self(), mainThread);
}
void mainThreadOnly(const char* call) {
    if (!onMainThread()) violation(std::string(call) + " off the main thread");
}

void block(std::string_view name) {
    if (delay(name) >= 0) return reallySleep(delay(name));
    threads.stuck = true;
    threads.change(-1);
    for (;;) pause();
}

void answerLater(std::string_view name, std::function<void()> work) {
    const double seconds = delay(name);
    if (seconds < 0) return;
    startThread(1 << 20, [=] {
        reallySleep(seconds);
        work();
    });
}

void startThread(std::size_t stackSize, std::function<void()> work) {
    threads.change(1);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackSize);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const auto run = [](void* given) -> void* {
        auto* body = static_cast<std::function<void()>*>(given);
        @autoreleasepool {
            (*body)();
            delete body;
        }
        forgetRunLoop();
        threads.change(-1);
        return nullptr;
    };
    auto* body = new std::function<void()>(std::move(work));
    if (pthread_create(&thread, &attributes, run, body) != 0) violation("no more threads");
    pthread_attr_destroy(&attributes);
}

void awaitThreads() {
    std::unique_lock guard(threads.mutex);
    threads.changed.wait(guard, [] { return threads.busy <= 0; });
}

}  // namespace quil::substitute

/// For `@available` (available.h): the version when the system has it.
extern "C" const char* quil_ifAvailable(const char* version) {
    return std::atoi(version + std::strcspn(version, "0123456789")) <= mac.version ? version
                                                                                   : nullptr;
}

/// The pauses of the backend's clock are the simulated desktop's.
extern "C" int nanosleep(const timespec* time, timespec*) {
    static thread_local bool inside = false;
    const double seconds =
        static_cast<double>(time->tv_sec) + static_cast<double>(time->tv_nsec) / 1e9;
    if (inside || !services) {
        reallySleep(seconds);
    } else {
        inside = true;
        services->clock().sleepMicroseconds(static_cast<std::uint32_t>(seconds * 1e6 + 0.5));
        inside = false;
    }
    return 0;
}

namespace {

/// The Mac of the backend, but for the wires to the scenario's script.
class ScriptedMac : public macos::MacPlatform {
  public:
    explicit ScriptedMac(SimulatedDesktop& desktop)
        : requests_(MacPlatform::standardInput(), [&desktop] { desktop.requestArrives(); }) {}
    InputStream& standardInput() override { return requests_; }

  private:
    simulated::RequestInput requests_;
};

void load(const char* path, SimulatedDesktop& desktop) {
    std::ifstream file(path);
    auto scenario = nlohmann::json::parse(file);
    const auto habits = scenario.value("mac", nlohmann::json::object());
    mac.version = habits.value("version", mac.version);
    mac.roundTrip = habits.value("roundTrip", mac.roundTrip);
    mac.silentErrors = habits.value("silentErrors", false);
    mac.delays = habits.value("delays", mac.delays);
    scenario.erase("mac");
    const auto rest = simulated::loadScenario(scenario.dump(), desktop);
    if (rest.log) simulated::writeLogTo(*rest.log, desktop);
}

}  // namespace

int main(int, char** argv) {
    SimulatedDesktop desktop;
    try {
        load(argv[1], desktop);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quil-mac-fake: %s\n", error.what());
        return 2;
    }
    simulated::MemoryInput noInput;
    simulated::MemoryOutput noOutput;
    SimulatedPlatform simulated(desktop, noInput, noOutput);
    services = &simulated;
    int status = 0;
    @autoreleasepool {
        ScriptedMac platform(desktop);
        status = runProcess(platform);
    }
    awaitThreads();
    emptyMainLoop();
    const auto left = threads.stuck ? std::map<std::string, long>() : liveObjects();
    for (const auto& [name, count] : left) {
        std::fprintf(stderr, "left behind: %ld %s\n", count, name.c_str());
    }
    return left.empty() ? status : 3;
}
