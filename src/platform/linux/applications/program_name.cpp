#include "platform/linux/applications/program_name.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <sstream>
#include <utility>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

/// How a program that runs other programs reads its command line. Options that are not named take
/// no word of their own.
struct Interpreter {
    std::string_view name;  // without its version
    /// Options of one letter whose value is the rest of their word, or else the next word.
    std::string_view lettersWithValue{};
    /// Options of one letter whose value is only ever the rest of their word.
    std::string_view lettersWithRest{};
    /// Options of one letter that are followed by a text to run instead of a program.
    std::string_view lettersWithCode{};
    /// Options of one letter that are followed by the program.
    std::string_view lettersWithProgram{};
    /// Longer options, those that are followed by a value and those that are followed by the
    /// program, with a space around each.
    std::string_view wordsWithValue{};
    std::string_view wordsWithProgram{};
    /// What is between it and what it runs.
    std::string_view command{};
    /// It starts other programs, which may be interpreters themselves.
    bool isLauncher = false;
};

constexpr std::string_view kShellWords = " --rcfile --init-file ";

constexpr Interpreter kInterpreters[] = {
    {.name = "bash",
     .lettersWithValue = "oO",
     .lettersWithCode = "c",
     .wordsWithValue = kShellWords},
    {.name = "dash", .lettersWithValue = "o", .lettersWithCode = "c"},
    {.name = "dbus-launch", .isLauncher = true},
    {.name = "dbus-run-session",
     .wordsWithValue = " --config-file --dbus-daemon ",
     .isLauncher = true},
    {.name = "electron", .lettersWithValue = "r"},
    {.name = "env",
     .lettersWithValue = "uC",
     .wordsWithValue = " --unset --chdir ",
     .isLauncher = true},
    {.name = "flatpak", .wordsWithValue = " --branch --arch --command --cwd ", .command = "run"},
    {.name = "gjs",
     .lettersWithValue = "IC",
     .lettersWithCode = "c",
     .wordsWithValue = " --include-path --coverage-prefix "},
    {.name = "ionice", .lettersWithValue = "cn", .isLauncher = true},
    {.name = "java",
     .wordsWithValue = " -cp -classpath --class-path -p --module-path --upgrade-module-path "
                       "--add-modules --add-exports --add-opens --add-reads --limit-modules "
                       "--patch-module --source ",
     .wordsWithProgram = " -jar -m --module "},
    {.name = "ksh", .lettersWithValue = "o", .lettersWithCode = "c"},
    {.name = "lua", .lettersWithValue = "el"},
    {.name = "mono"},
    {.name = "nice", .lettersWithValue = "n", .isLauncher = true},
    {.name = "node",
     .lettersWithValue = "rC",
     .lettersWithCode = "ep",
     .wordsWithValue = " --require --import --loader --conditions "},
    {.name = "nohup", .isLauncher = true},
    {.name = "perl",
     .lettersWithValue = "I",
     .lettersWithRest = "CDFMVdmx",
     .lettersWithCode = "eE"},
    {.name = "php", .lettersWithValue = "cdz", .lettersWithCode = "r", .lettersWithProgram = "f"},
    {.name = "pkexec", .wordsWithValue = " --user ", .isLauncher = true},
    {.name = "python",
     .lettersWithValue = "WX",
     .lettersWithCode = "c",
     .lettersWithProgram = "m",
     .wordsWithValue = " --check-hash-based-pycs "},
    {.name = "ruby", .lettersWithValue = "ICr", .lettersWithRest = "EKTWx", .lettersWithCode = "e"},
    {.name = "setsid", .isLauncher = true},
    {.name = "sh", .lettersWithValue = "o", .lettersWithCode = "c"},
    {.name = "snap", .command = "run"},
    {.name = "sudo", .lettersWithValue = "ugpCD", .isLauncher = true},
    {.name = "tclsh", .wordsWithValue = " -encoding "},
    {.name = "wine"},
    {.name = "wish", .wordsWithValue = " -encoding -name -display -geometry "},
    {.name = "zsh", .lettersWithValue = "o", .lettersWithCode = "c"},
};

const Interpreter* findInterpreter(std::string_view program) {
    const std::string name = lowercased(program);
    const std::string_view withoutVersion =
        std::string_view(name).substr(0, name.find_first_of("0123456789."));
    const auto* found = std::ranges::find_if(kInterpreters, [&](const Interpreter& entry) {
        return withoutVersion == entry.name || withoutVersion == std::string(entry.name) + '-';
    });
    return found == std::end(kInterpreters) ? nullptr : found;
}

bool names(std::string_view list, std::string_view word) {
    return list.find(' ' + std::string(word) + ' ') != std::string_view::npos;
}

enum class OptionKind { plain, withValue, withProgram, withCode };

OptionKind kindOf(const Interpreter& interpreter, std::string_view option) {
    if (names(interpreter.wordsWithProgram, option)) return OptionKind::withProgram;
    if (names(interpreter.wordsWithValue, option)) return OptionKind::withValue;
    if (option.starts_with("--")) return OptionKind::plain;
    for (std::size_t i = 1; i < option.size(); ++i) {
        const auto isIn = [&](std::string_view letters) {
            return letters.find(option[i]) != std::string_view::npos;
        };
        if (isIn(interpreter.lettersWithCode)) return OptionKind::withCode;
        if (isIn(interpreter.lettersWithRest)) return OptionKind::plain;
        if (isIn(interpreter.lettersWithValue)) {
            return i + 1 == option.size() ? OptionKind::withValue : OptionKind::plain;
        }
        if (isIn(interpreter.lettersWithProgram) && i + 1 == option.size()) {
            return OptionKind::withProgram;
        }
    }
    return OptionKind::plain;
}

using Words = std::span<const std::string>;

/// The words of a text for a shell that only starts a program; none for any other text.
std::vector<std::string> wordsOfSimpleCommand(const std::string& text) {
    if (text.find_first_of(";|&<>$`(){}\"'\\\n*?#~=") != std::string::npos) return {};
    std::istringstream stream(text);
    std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    if (!words.empty() && words.front() == "exec") words.erase(words.begin());
    return words;
}

/// What a command line runs.
struct Command {
    std::vector<std::string> words;
    /// Its first word is the program, whatever that is called.
    bool isKnown = false;
};

Command commandOf(const Interpreter& interpreter, Words words) {
    const auto from = [&](std::size_t index) {
        const auto rest = words.subspan(std::min(index, words.size()));
        return Command{{rest.begin(), rest.end()}, !interpreter.isLauncher};
    };
    bool isCommandAwaited = !interpreter.command.empty();
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--") return from(i + 1);
        if (word.size() > 1 && (word.front() == '-' || word.front() == '+')) {
            const OptionKind kind = kindOf(interpreter, word);
            if (kind == OptionKind::withProgram) return from(i + 1);
            if (kind == OptionKind::withValue) ++i;
            if (kind != OptionKind::withCode) continue;
            const bool isShell = interpreter.name.ends_with("sh");
            if (!isShell || i + 1 == words.size()) return {};
            return {wordsOfSimpleCommand(words[i + 1]), false};
        }
        const bool isSetting = interpreter.name == "env" && word.find('=') != std::string::npos;
        if (word.empty() || word == "-" || isSetting) continue;
        if (!std::exchange(isCommandAwaited, false)) return from(i);
        if (word != interpreter.command) return {};
    }
    return {};
}

}  // namespace

std::string_view fileName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

bool isInterpreter(std::string_view program) {
    return findInterpreter(program) != nullptr;
}

std::string programOf(const std::vector<std::string>& words) {
    Command command{words, false};
    while (!command.words.empty() && !command.isKnown) {
        const Interpreter* interpreter = findInterpreter(fileName(command.words.front()));
        if (!interpreter) break;
        command = commandOf(*interpreter, Words(command.words).subspan(1));
    }
    return command.words.empty() ? std::string() : command.words.front();
}

}  // namespace quil::linux_platform
