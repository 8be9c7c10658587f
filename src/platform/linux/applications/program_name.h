#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quil::linux_platform {

/// The last component of a path.
std::string_view fileName(std::string_view path);

/// Whether a program of that name runs other programs (an interpreter such as "python3.11", or a
/// launcher such as "env"): what it runs says more than itself.
bool isInterpreter(std::string_view program);

/// Which of these command-line words names the program that really runs: the first, or for an
/// interpreter the script or module that it is given. Their number when no word does.
std::size_t programWord(const std::vector<std::string>& words);

}  // namespace quil::linux_platform
