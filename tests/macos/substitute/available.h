// Goes before every file of the backend: `@available(macOS 14.0, *)`, which this compiler takes to
// be true on every other system, becomes a boxed text, which is nil where the system is older.
#pragma once

extern "C" const char* quil_ifAvailable(const char* version);
#define available(version, ...) (quil_ifAvailable(#version))
