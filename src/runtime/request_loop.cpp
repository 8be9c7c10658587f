#include "runtime/request_loop.h"

#include "runtime/dispatch.h"
#include "runtime/line_reader.h"

namespace quil {

void runRuntimeLoop(Runtime& runtime) {
    LineReader lines(runtime.platform.standardInput());
    while (const auto line = lines.next()) {
        runtime.platform.threads().autoreleasePool([&] {
            if (const auto request = parseRequest(*line)) dispatch(runtime, *request);
        });
    }
}

}  // namespace quil
