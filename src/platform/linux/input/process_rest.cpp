#include "platform/linux/input/process_rest.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace quil::linux_platform {

std::optional<std::uint64_t> timeRunAtRest(std::int32_t pid) {
    std::uint64_t sum = 0;
    std::error_code error;
    const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks, error)) {
        std::string status;
        std::getline(std::ifstream(task.path() / "stat"), status);
        const std::size_t name = status.rfind(") ");
        if (name != std::string::npos && status.compare(name + 2, 1, "S") != 0) return {};
        std::uint64_t run = 0;
        std::ifstream(task.path() / "schedstat") >> run;
        sum += run;
    }
    return sum;
}

}  // namespace quil::linux_platform
