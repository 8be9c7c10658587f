#include "runtime/runtime.h"

namespace quil {

Runtime::Runtime(Platform& platformToUse)
    : platform(platformToUse),
      responses(platformToUse.standardOutput()),
      sharedInputRecorder(InputRecorder::create(platformToUse)) {}

}  // namespace quil
