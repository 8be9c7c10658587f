#include "platform/linux/applications/processes.h"

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

constexpr int kMaximumGenerations = 16;

std::string pathOf(std::int32_t pid, std::string_view file) {
    return "/proc/" + std::to_string(pid) + '/' + std::string(file);
}

/// Reading fails for a process that has ended since its file was opened; iterators over a stream or
/// a folder would throw then.
std::string contentsOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string contents;
    char buffer[4096];
    while (stream.read(buffer, sizeof buffer) || stream.gcount() > 0) {
        contents.append(buffer, static_cast<std::size_t>(stream.gcount()));
    }
    return contents;
}

/// The folders of the process's threads.
std::vector<std::filesystem::path> tasksOf(std::int32_t pid) {
    std::vector<std::filesystem::path> tasks;
    std::error_code error;
    std::filesystem::directory_iterator task(pathOf(pid, "task"), error);
    for (; !error && task != std::filesystem::directory_iterator(); task.increment(error)) {
        tasks.push_back(task->path());
    }
    return tasks;
}

/// The parts that end with a NUL byte each.
std::vector<std::string_view> splitAtNul(std::string_view text) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\0'), text.size());
        parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

/// A numeric field of the process's status line, counted from 1 as proc(5) does. The second field
/// is the name in parentheses, which may itself hold any character.
std::optional<std::uint64_t> statusNumber(std::int32_t pid, int wanted) {
    const std::string stat = contentsOf(pathOf(pid, "stat"));
    std::size_t at = stat.rfind(')');
    for (int field = 2; field < wanted && at != std::string::npos; ++field) {
        at = stat.find(' ', at + 1);
    }
    if (at == std::string::npos) return {};
    std::uint64_t number = 0;
    const char* end = stat.data() + stat.size();
    return std::from_chars(stat.data() + at + 1, end, number).ec == std::errc()
               ? std::optional(number)
               : std::nullopt;
}

}  // namespace

std::optional<std::string> executableOf(std::int32_t pid) {
    std::error_code error;
    std::string path = std::filesystem::read_symlink(pathOf(pid, "exe"), error).string();
    if (error) return {};
    // The kernel marks the executable of a program that has been replaced since it started.
    constexpr std::string_view kDeleted = " (deleted)";
    if (path.ends_with(kDeleted)) path.resize(path.size() - kDeleted.size());
    return validUtf8(path);
}

std::vector<std::string> argumentsOf(std::int32_t pid) {
    const std::string line = contentsOf(pathOf(pid, "cmdline"));
    std::vector<std::string> arguments;
    for (const std::string_view argument : splitAtNul(line)) {
        arguments.push_back(validUtf8(argument));
    }
    return arguments;
}

std::string environmentVariableOf(std::int32_t pid, std::string_view name) {
    const std::string environment = contentsOf(pathOf(pid, "environ"));
    for (const std::string_view entry : splitAtNul(environment)) {
        if (entry.starts_with(name) && entry.substr(name.size()).starts_with('=')) {
            return validUtf8(entry.substr(name.size() + 1));
        }
    }
    return {};
}

std::string processName(std::int32_t pid) {
    std::string name = contentsOf(pathOf(pid, "comm"));
    if (name.ends_with('\n')) name.pop_back();
    return validUtf8(name);
}

std::optional<std::uint64_t> startTimeOf(std::int32_t pid) {
    return statusNumber(pid, 22);
}

bool hasEnded(std::int32_t pid) {
    const std::string stat = contentsOf(pathOf(pid, "stat"));
    const std::size_t name = stat.rfind(") ");
    return name == std::string::npos || stat.compare(name + 2, 1, "Z") == 0;
}

std::optional<std::int32_t> parentOf(std::int32_t pid) {
    const auto parent = statusNumber(pid, 4);
    return parent && *parent > 0 ? std::optional(static_cast<std::int32_t>(*parent)) : std::nullopt;
}

bool isDescendantOf(std::int32_t pid, std::int32_t ancestor) {
    std::optional<std::int32_t> current = pid;
    for (int generation = 0; current && generation < kMaximumGenerations; ++generation) {
        current = parentOf(*current);
        if (current == ancestor) return true;
    }
    return false;
}

std::optional<std::int32_t> sessionOf(std::int32_t pid) {
    const auto session = statusNumber(pid, 6);
    return session ? std::optional(static_cast<std::int32_t>(*session)) : std::nullopt;
}

std::optional<std::string> workingFolderOf(std::int32_t pid) {
    std::error_code error;
    std::string path = std::filesystem::read_symlink(pathOf(pid, "cwd"), error).string();
    return error ? std::nullopt : std::optional(std::move(path));
}

bool hasMappedFile(std::int32_t pid, const std::function<bool(std::string_view path)>& isWanted) {
    std::ifstream maps(pathOf(pid, "maps"));
    for (std::string line; std::getline(maps, line);) {
        // The path is the last field, and the only one with slashes.
        const std::size_t path = line.find('/');
        if (path != std::string::npos && isWanted(std::string_view(line).substr(path))) return true;
    }
    return false;
}

std::vector<ThreadActivity> threadsOf(std::int32_t pid) {
    std::vector<ThreadActivity> threads;
    for (const std::filesystem::path& task : tasksOf(pid)) {
        const std::string status = contentsOf(task / "stat");
        const std::size_t name = status.rfind(") ");
        if (name == std::string::npos) continue;  // it has ended
        ThreadActivity& thread = threads.emplace_back();
        thread.id = std::atoi(task.filename().c_str());
        thread.isSleeping = status.compare(name + 2, 1, "S") == 0;
        std::ifstream(task / "schedstat") >> thread.cpuTime >> thread.waitTime;
    }
    return threads;
}

std::optional<std::uint64_t> cpuTimeWhenIdle(std::int32_t pid) {
    std::uint64_t sum = 0;
    for (const ThreadActivity& thread : threadsOf(pid)) {
        if (!thread.isSleeping) return {};
        sum += thread.cpuTime;
    }
    return sum;
}

std::vector<std::int32_t> processesOfProgram(std::int32_t pid) {
    const std::vector<std::string> arguments = argumentsOf(pid);
    std::vector<std::int32_t> processes{pid};
    if (arguments.empty()) return processes;
    for (std::size_t i = 0; i < processes.size(); ++i) {
        for (const std::filesystem::path& task : tasksOf(processes[i])) {
            std::ifstream children(task / "children");
            for (std::int32_t child = 0; children >> child;) {
                // Not the whole argument: some programs write all of theirs into the first.
                const std::vector<std::string> line = argumentsOf(child);
                if (!line.empty() && line.front().starts_with(arguments.front())) {
                    processes.push_back(child);
                }
            }
        }
    }
    return processes;
}

std::string flatpakIdOf(std::int32_t pid) {
    // flatpak-metadata(5): the sandbox's own description of itself.
    std::ifstream stream(pathOf(pid, "root/.flatpak-info"));
    bool inApplication = false;
    for (std::string line; std::getline(stream, line);) {
        constexpr std::string_view kName = "name=";
        if (line.starts_with('[')) inApplication = line == "[Application]";
        if (inApplication && line.starts_with(kName)) return validUtf8(line.substr(kName.size()));
    }
    return {};
}

}  // namespace quil::linux_platform
