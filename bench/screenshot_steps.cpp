// Where the time of a screenshot goes: the frontmost window of the real desktop, step by step.
//
// usage: screenshot_steps [ROUNDS]
//
// Prints the median of every step in milliseconds.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "json/json.h"
#include "platform/linux/platform.h"
#include "platform/png/picture.h"
#include "platform/png/png_rows.h"
#include "text/base64.h"

namespace {

/// Times of one step in all rounds.
class Step {
  public:
    explicit Step(const char* name) : name_(name) {}

    template <typename Work>
    auto time(Work work) {
        const auto begin = std::chrono::steady_clock::now();
        auto result = work();
        milliseconds_.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
                .count());
        return result;
    }

    void print() {
        std::sort(milliseconds_.begin(), milliseconds_.end());
        std::printf("  %-44s%8.2f\n", name_, milliseconds_[milliseconds_.size() / 2]);
    }

  private:
    const char* name_;
    std::vector<double> milliseconds_;
};

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 15;
    quil::linux_platform::LinuxPlatform platform;
    Step content("windows that can be captured");
    Step front("who is frontmost");
    Step capture("pixels of the window");
    Step png("PNG");
    Step rows("  of which choosing the format");
    Step base64("Base64");
    Step json("JSON");
    for (int i = 0; i < rounds; ++i) {
        auto& screen = platform.screenCapture();
        const auto shareable =
            content.time([&] { return screen.getShareableContent(false, true); });
        const auto application =
            front.time([&] { return platform.workspace().frontmostApplication(); });
        if (!shareable || !application) return 1;
        const auto window = std::find_if(
            shareable->windows.begin(), shareable->windows.end(), [&](const auto& candidate) {
                return candidate.owningProcessId == application->processIdentifier;
            });
        if (window == shareable->windows.end()) return 1;
        const quil::StreamConfiguration configuration{
            static_cast<std::int64_t>(2 * window->frame.width),
            static_cast<std::int64_t>(2 * window->frame.height), false};
        const auto image =
            capture.time([&] { return screen.captureImage(*window, configuration); });
        if (!image) return 1;
        const auto& picture = dynamic_cast<const quil::PictureImage&>(*image).picture();
        rows.time([&] { return choosePngFormat(picture).bitDepth; });
        const std::string file = png.time([&] { return screen.pngRepresentation(*image); });
        const std::string url = base64.time([&] {
            std::string text = "data:image/png;base64,";
            quil::appendBase64(text, file);
            return text;
        });
        json.time([&] { return quil::Json{{"screenshotDataURL", url}}.dump(); });
    }
    for (Step* step : {&content, &front, &capture, &png, &rows, &base64, &json}) step->print();
    return 0;
}
