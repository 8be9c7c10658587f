#pragma once

#include <gio/gio.h>

#include <memory>

namespace quil::linux_platform {

struct GlibDeleter {
    void operator()(char* text) const { g_free(text); }
    void operator()(GDir* directory) const { g_dir_close(directory); }
    void operator()(GKeyFile* keyFile) const { g_key_file_unref(keyFile); }
};

struct GObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};

using GlibText = std::unique_ptr<char, GlibDeleter>;
using GlibDirectory = std::unique_ptr<GDir, GlibDeleter>;
using GlibKeyFile = std::unique_ptr<GKeyFile, GlibDeleter>;

/// A reference to an object, of which the handle is one of the owners.
template <typename T>
using GObjectHandle = std::unique_ptr<T, GObjectDeleter>;

}  // namespace quil::linux_platform
