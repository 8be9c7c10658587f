#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/posix/streams.h"
#include "platform/simulated/platform.h"
#include "platform/simulated/scenario/log_file.h"
#include "platform/simulated/scenario/scenario.h"
#include "runtime/process.h"

namespace {

constexpr int kBadScenario = 2;

std::string readFile(const char* path) {
    std::string text;
    std::FILE* const file = std::fopen(path, "rb");
    bool failed = !file;
    for (char buffer[65536]; !failed;) {
        const std::size_t count = std::fread(buffer, 1, sizeof buffer, file);
        text.append(buffer, count);
        failed = std::ferror(file) != 0;
        if (count == 0) break;
    }
    const int error = errno;
    if (file) std::fclose(file);
    if (failed) throw std::runtime_error(std::generic_category().message(error));
    return text;
}

/// Names that the scenario's author gave may hold line feeds and terminal commands.
std::string onOneLine(std::string text) {
    std::ranges::replace_if(
        text, [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, '?');
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    quil::secureStandardStreams();
    if (argc != 2) {
        std::fputs("usage: quil-sim SCENARIO.json\n", stderr);
        return kBadScenario;
    }
    quil::SimulatedDesktop desktop;
    try {
        const auto scenario = quil::simulated::loadScenario(readFile(argv[1]), desktop);
        if (scenario.log) quil::simulated::writeLogTo(*scenario.log, desktop);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quil-sim: %s: %s\n", argv[1], onOneLine(error.what()).c_str());
        return kBadScenario;
    }
    quil::PosixInputStream input;
    quil::PosixOutputStream output;
    quil::SimulatedPlatform platform(desktop, input, output);
    return quil::runProcess(platform);
}
