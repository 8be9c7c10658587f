#include "platform/linux/applications/program_name.h"

#include <algorithm>
#include <iterator>

#include "text/characters.h"

namespace quil::linux_platform {

std::string_view fileName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

bool isInterpreter(std::string_view program) {
    constexpr std::string_view kInterpreters[] = {
        "bash", "dash", "env",    "flatpak", "gjs", "java", "lua",   "mono", "node",
        "perl", "php",  "python", "ruby",    "sh",  "snap", "tclsh", "wine", "wish"};
    const std::string name = lowercased(program);
    const std::string_view withoutVersion =
        std::string_view(name).substr(0, name.find_first_of("0123456789.-"));
    return std::find(std::begin(kInterpreters), std::end(kInterpreters), withoutVersion) !=
           std::end(kInterpreters);
}

std::size_t programWord(const std::vector<std::string>& words) {
    std::size_t word = 0;
    while (word < words.size() && isInterpreter(fileName(words[word]))) {
        // Past its options and the variables that env is to set.
        const auto isProgram = [](const std::string& argument) {
            return !argument.empty() && argument.front() != '-' &&
                   argument.find('=') == std::string::npos;
        };
        const auto next = std::find_if(words.begin() + static_cast<std::ptrdiff_t>(word) + 1,
                                       words.end(), isProgram);
        word = static_cast<std::size_t>(next - words.begin());
    }
    return word;
}

}  // namespace quil::linux_platform
