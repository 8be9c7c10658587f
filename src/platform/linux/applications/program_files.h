#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The files of programs.
namespace quil::linux_platform {

/// The file that a word of a command line names: a path as it is, below `folder` when it is a
/// relative one, and a plain name below the folders of $PATH. Links are followed. Empty when there
/// is no such file.
std::string programFile(const std::string& word, const std::string& folder);

/// Whether it is a text for an interpreter that its first line names ("#!").
bool isScript(const std::string& path);

/// Whether both lie in the folder of one application, such as "/usr/lib/libreoffice/program", and
/// not in one that is for the programs of many.
bool areOfOneApplication(const std::string& path, const std::string& other);

/// Whether the system can start this command line in that folder: the file of its first word may be
/// executed, and so may what that needs: the interpreter of a script, the loader of a binary, and
/// the program that "env" is to start. Without one of them, starting it fails as if the program
/// itself were missing.
bool canBeRun(const std::vector<std::string>& words, const std::string& folder);

}  // namespace quil::linux_platform
