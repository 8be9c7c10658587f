#include "runtime/process.h"

#include "runtime/request_loop.h"
#include "runtime/runtime.h"

namespace quil {

int runProcess(Platform& platform) {
    Runtime runtime(platform);
    Threads& threads = platform.threads();
    // The body's last act ends the main run loop; after it the thread touches nothing of ours.
    const ThreadRef worker =
        threads.startThread("quil.request-loop", QualityOfService::userInitiated, [&] {
            runRuntimeLoop(runtime);
            threads.stopMainRunLoop();
        });
    threads.runMainRunLoop();
    return 0;
}

}  // namespace quil
