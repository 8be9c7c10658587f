#include "accessibility/ax_wait.h"

#include <algorithm>
#include <memory>

#include "accessibility/ax_snapshot.h"

namespace quil {
namespace {

/// How often the tree is looked at where the platform notifies of nothing.
constexpr double kPollingSeconds = 0.25;

class Waiting {
  public:
    Waiting(Platform& platform, const std::string& given) : platform_(platform), given_(given) {
        observe();
    }

    AxWaitOutcome until(double end, double quietSeconds) {
        for (;;) {
            const double now = uptime();
            if (now >= end) break;
            const double quietEnd = changedAt_ + quietSeconds;
            if (isChanged() && now >= quietEnd) break;
            pause((isChanged() ? std::min(end, quietEnd) : end) - now);
            observe();
        }
        return {isChanged(), revision_};
    }

  private:
    double uptime() { return platform_.clock().systemUptime(); }
    bool isChanged() const { return revision_ != given_; }

    void observe() {
        const double begin = uptime();
        const auto application = platform_.workspace().frontmostApplication();
        const std::int32_t pid = application ? application->processIdentifier : 0;
        // Before the look, so that nothing is missed between the two.
        if (!watch_ || pid != pid_) watch_ = platform_.accessibility().watchChanges(pid);
        pid_ = pid;
        LastAxSnapshot snapshot;
        std::string revision = pid == 0
                                   ? std::string()
                                   : axSnapshot(platform_.accessibility(), snapshot, pid)->revision;
        observed_ = uptime();
        observationSeconds_ = observed_ - begin;
        if (revision == revision_ && !isFirst_) return;
        isFirst_ = false;
        revision_ = std::move(revision);
        changedAt_ = observed_;
    }

    /// Waits until there is a reason to look again. A restless application is observed half of the
    /// time at the most.
    void pause(double seconds) {
        const double rest = std::min(observationSeconds_, seconds);
        if (!watch_) {
            sleep(std::min(seconds, std::max(kPollingSeconds, rest)));
        } else if (watch_->wait(microseconds(seconds))) {
            sleep(std::min(seconds, observed_ + rest - uptime()));
        }
    }

    static std::uint64_t microseconds(double seconds) {
        return static_cast<std::uint64_t>(std::max(0.0, seconds) * 1e6) + 1;
    }
    void sleep(double seconds) {
        if (seconds <= 0) return;
        platform_.clock().sleepMicroseconds(static_cast<std::uint32_t>(microseconds(seconds)));
    }

    Platform& platform_;
    const std::string& given_;
    std::unique_ptr<ChangeWatch> watch_;
    std::int32_t pid_ = 0;
    bool isFirst_ = true;
    std::string revision_;
    double changedAt_ = 0;
    double observed_ = 0;
    double observationSeconds_ = 0;
};

}  // namespace

AxWaitOutcome waitForAxChange(Platform& platform, const std::string& revision,
                              std::int64_t timeoutMs, std::int64_t quietMs) {
    const double end = platform.clock().systemUptime() + static_cast<double>(timeoutMs) / 1000;
    return Waiting(platform, revision).until(end, static_cast<double>(quietMs) / 1000);
}

}  // namespace quil
