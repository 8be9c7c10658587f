#include "runtime/process.h"

#include "runtime/dispatch.h"
#include "runtime/line_reader.h"
#include "runtime/runtime.h"

namespace quil {
namespace {

/// Serves the requests on standard input one at a time, in order, and returns when it ends. A line
/// that is no request is dropped without a response.
void runRuntimeLoop(Runtime& runtime) {
    LineReader lines(runtime.platform.standardInput());
    while (const auto line = lines.next()) {
        runtime.platform.threads().autoreleasePool([&] {
            if (const auto request = parseRequest(*line)) dispatch(runtime, *request);
        });
    }
}

}  // namespace

int runProcess(Platform& platform) {
    Runtime runtime(platform);
    Threads& threads = platform.threads();
    // The body's last act ends the main run loop; after it the thread touches nothing of ours.
    const ThreadRef worker =
        threads.startThread("quil.request-loop", QualityOfService::userInitiated, [&] {
            runRuntimeLoop(runtime);
            threads.stopMainRunLoop();
        });
    if (!worker) return 1;
    threads.runMainRunLoop();
    return 0;
}

}  // namespace quil
