#include "platform/linux/x11/input/program_wait.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/linux/applications/idle_watch.h"
#include "platform/linux/applications/processes.h"
#include "platform/linux/x11/input/window_client.h"

namespace quil::linux_platform {

void waitForPrograms(X11Connection& connection, std::initializer_list<xcb_window_t> windows,
                     std::chrono::steady_clock::time_point deadline) {
    std::vector<std::int32_t> done;
    for (const xcb_window_t window : windows) {
        WindowClient program(connection, window);
        if (program.pid() && std::ranges::find(done, *program.pid()) != done.end()) continue;
        program.sendPing();
        program.waitForPings(0, leftUntil(deadline));
        if (!program.pid()) continue;
        done.push_back(*program.pid());
        auto processes = processesOfProgram(*program.pid());
        if (processes.size() > 1) IdleWatch(std::move(processes)).wait(deadline);
    }
}

}  // namespace quil::linux_platform
