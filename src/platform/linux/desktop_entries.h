#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quil::linux_platform {

/// What a process or its windows say that may lead to its desktop entry. Empty means unknown.
struct ApplicationHints {
    std::int32_t pid = 0;
    std::string gtkApplicationId;
    std::string className;
    std::string instanceName;
};

/// A desktop entry that an application runs from.
struct DesktopEntry {
    /// The desktop file id, such as "org.gnome.Calculator.desktop".
    std::string id;
    std::string localizedName;
};

/// The installed desktop entries, looked up by what is known of a running application.
class DesktopEntries {
  public:
    /// The entry that the application was most likely started from: the one that its launcher left
    /// in its environment, else the one of its GTK application id, of its window class, of its
    /// program. Nothing when none of them fits.
    std::optional<DesktopEntry> find(const ApplicationHints& hints);

  private:
    void refresh();

    std::string stamp_;  // when and where the index was made
    std::map<std::string, std::string, std::less<>> byWindowClass_;  // lower case → id
    std::map<std::string, std::string, std::less<>> byProgram_;      // file name → id
};

/// The path of the desktop file with that id; nothing when there is none.
std::optional<std::string> desktopFileOf(const std::string& id);

/// The path of a process's executable; nothing when the process is gone or may not be looked at.
std::optional<std::string> executableOf(std::int32_t pid);

/// The name that the kernel keeps of a process; empty when it is gone.
std::string processName(std::int32_t pid);

}  // namespace quil::linux_platform
