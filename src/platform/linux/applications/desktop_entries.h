#pragma once

#include <gio/gdesktopappinfo.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/applications/glib_handles.h"

/// Desktop entries: the files by which applications announce themselves (freedesktop.org's Desktop
/// Entry standard). An entry's id, such as "org.gnome.Calculator.desktop", is its
/// application's bundle identifier, its file the bundle.
namespace quil::linux_platform {

inline constexpr std::string_view kDesktopEntrySuffix = ".desktop";

/// So many folders can lie inside each other below an "applications" folder. There are few and flat
/// ones; links could make them endless.
inline constexpr int kDeepestEntryFolder = 4;

using DesktopEntry = GObjectHandle<GDesktopAppInfo>;

/// The "applications" folders of the data directories, the user's own first. An entry in an
/// earlier folder replaces one of the same id in a later one. Folders whose paths are not text are
/// left out.
std::vector<std::string> desktopEntryFolders();

/// Whether a file of that name is an entry. One that is not text could not be given back to us to
/// launch it.
bool isDesktopEntryName(const std::string& fileName);

/// The file of the entry with that id; nothing when there is none, or it only says that the
/// application has been removed.
std::optional<std::string> findDesktopEntry(std::string_view id);

/// Reads an entry. Null when the file is not one, or the program that it starts is not installed.
DesktopEntry readDesktopEntry(const std::string& path);

/// Reads the keys of an entry, whether or not its program is installed. Null when the file is not
/// one.
GlibKeyFile readKeysOfDesktopEntry(const std::string& path);

/// The name in the user's language; nothing when the entry has none.
std::optional<std::string> localizedNameOf(const DesktopEntry& entry);

/// The command that the entry starts its program with, as it is written there; empty for none.
std::string commandLineOf(const DesktopEntry& entry);

/// The words of the command, placeholders for files and URLs left out.
std::vector<std::string> commandOf(const DesktopEntry& entry);

/// The class that the application's windows have (StartupWMClass); empty when the entry has none.
std::string windowClassOf(const DesktopEntry& entry);

}  // namespace quil::linux_platform
