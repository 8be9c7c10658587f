#include "platform/linux/applications/program_files.h"

#include <elf.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "platform/linux/applications/glib_handles.h"
#include "platform/linux/applications/program_name.h"

namespace quil::linux_platform {
namespace {

/// Interpreters that are scripts themselves are followed so far, as the kernel does (execve(2)).
constexpr int kMaximumInterpreters = 4;

std::string inPath(const std::string& name) {
    const GlibText path(g_find_program_in_path(name.c_str()));
    return path ? path.get() : "";
}

bool isExecutableFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

/// The words of a script's first line after "#!"; none for any other file.
std::vector<std::string> interpreterLine(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    char mark[2]{};
    if (!file.read(mark, sizeof mark) || mark[0] != '#' || mark[1] != '!') return {};
    std::string line;
    std::getline(file, line);
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

/// What "env" is to start with these words, which begin with its own.
std::vector<std::string> commandOfEnv(const std::vector<std::string>& words) {
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "-u" || word == "-C" || word == "--unset" || word == "--chdir") {
            ++i;
        } else if (!word.starts_with('-') && word.find('=') == std::string::npos) {
            return {words.begin() + static_cast<std::ptrdiff_t>(i), words.end()};
        }
    }
    return {};
}

template <typename Header, typename Segment>
std::string loaderIn(std::ifstream& file) {
    Header header{};
    if (!file.seekg(0).read(reinterpret_cast<char*>(&header), sizeof header)) return {};
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        Segment segment{};
        file.seekg(static_cast<std::streamoff>(header.e_phoff + i * sizeof segment));
        if (!file.read(reinterpret_cast<char*>(&segment), sizeof segment)) return {};
        if (segment.p_type != PT_INTERP || segment.p_filesz > PATH_MAX) continue;
        std::string loader(segment.p_filesz, '\0');
        file.seekg(static_cast<std::streamoff>(segment.p_offset));
        if (!file.read(loader.data(), static_cast<std::streamsize>(loader.size()))) return {};
        return loader.c_str();  // up to its NUL byte
    }
    return {};
}

/// The loader that a dynamically linked binary names; empty for any other file.
std::string loaderOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    unsigned char identification[EI_NIDENT]{};
    if (!file.read(reinterpret_cast<char*>(identification), sizeof identification) ||
        std::memcmp(identification, ELFMAG, SELFMAG) != 0) {
        return {};
    }
    return identification[EI_CLASS] == ELFCLASS64 ? loaderIn<Elf64_Ehdr, Elf64_Phdr>(file)
                                                  : loaderIn<Elf32_Ehdr, Elf32_Phdr>(file);
}

bool canBeRun(const std::vector<std::string>& words, const std::string& folder, int depth) {
    const std::string file = words.empty() ? "" : programFile(words.front(), folder);
    if (depth > kMaximumInterpreters || !isExecutableFile(file)) return false;
    const std::string loader = loaderOf(file);
    if (!loader.empty() && !isExecutableFile(loader)) return false;
    const std::vector<std::string> line = interpreterLine(file);
    if (!line.empty() && !canBeRun(line, "/", depth + 1)) return false;
    if (fileName(words.front()) != "env") return true;
    const std::vector<std::string> command = commandOfEnv(words);
    return command.empty() || canBeRun(command, folder, depth + 1);
}

}  // namespace

std::string programFile(const std::string& word, const std::string& folder) {
    if (word.empty()) return {};
    const bool isName = word.find('/') == std::string::npos;
    std::error_code error;
    const auto file = std::filesystem::canonical(
        isName ? std::filesystem::path(inPath(word)) : std::filesystem::path(folder) / word, error);
    return error ? std::string() : file.string();
}

bool areOfOneApplication(const std::string& path, const std::string& other) {
    constexpr std::string_view kApplicationFolders[] = {"/opt/", "/usr/lib/", "/usr/lib64/",
                                                        "/usr/local/lib/", "/usr/share/"};
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    if (!other.starts_with(folder) || other.find('/', folder.size()) != std::string::npos) {
        return false;
    }
    const std::string_view name = fileName(std::string_view(folder).substr(0, folder.size() - 1));
    return name != "bin" && name != "libexec" &&
           std::ranges::any_of(kApplicationFolders, [&](std::string_view home) {
               return folder.starts_with(home) && folder.size() > home.size();
           });
}

bool isScript(const std::string& path) {
    return !interpreterLine(path).empty();
}

bool canBeRun(const std::vector<std::string>& words, const std::string& folder) {
    return canBeRun(words, folder, 0);
}

}  // namespace quil::linux_platform
