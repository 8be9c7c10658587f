#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quil::linux_platform {

/// The last component of a path.
std::string_view fileName(std::string_view path);

/// Whether a program of that name runs other programs (an interpreter such as "python3.11", or a
/// launcher such as "env"): what it runs says more than itself.
bool isInterpreter(std::string_view program);

/// The program that really runs with this command line: its first word, or for an interpreter the
/// script, module, class or application that it is given. Empty when the command line names none,
/// such as that of an interpreter that runs a text or reads from a terminal.
std::string programOf(const std::vector<std::string>& words);

}  // namespace quil::linux_platform
