#include <algorithm>

#include "platform/png/png_encoder.h"
#include "platform/simulated/services.h"
#include "platform/simulated/window_picture.h"

namespace quil::simulated {
namespace {

bool isSelected(const Window& window, bool withoutDesktopElements, bool onScreenOnly) {
    return !(withoutDesktopElements && window.isDesktopElement()) &&
           !(onScreenOnly && !window.onScreen());
}

}  // namespace

std::optional<Value> SimulatedWindowList::copyWindowInfo(std::uint32_t options, std::uint32_t) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("copyWindowInfo")) return {};
    if (desktop_.windowListOverride) return desktop_.windowListOverride;
    Value::List list;
    for (const Window* window : desktop_.windows()) {
        if (isSelected(*window, options & kWindowListExcludeDesktopElements,
                       options & kWindowListOptionOnScreenOnly)) {
            list.emplace_back(window->info());
        }
    }
    return Value(std::move(list));
}

bool SimulatedWindowList::activateWindow(std::int64_t number) {
    const auto guard = desktop_.lock();
    const auto windows = desktop_.windows();
    const auto found = std::ranges::find(windows, number, &Window::number);
    const bool accepted = !desktop_.enter("activateWindow") && found != windows.end();
    desktop_.record(WindowActivation{number, accepted});
    if (!accepted) return false;
    (*found)->onScreen(true);
    desktop_.raise(**found);
    if (Application* owner = (*found)->owner()) owner->activate().focusWindow(*found);
    return true;
}

std::optional<std::int64_t> SimulatedWindowList::activeWindow() {
    const auto guard = desktop_.lock();
    if (desktop_.enter("activeWindow") || !desktop_.frontmost()) return {};
    const auto* window = dynamic_cast<const Window*>(desktop_.frontmost()->focusedWindow());
    return window ? std::optional<std::int64_t>(window->number()) : std::nullopt;
}

std::optional<ShareableContent> SimulatedScreenCapture::getShareableContent(
    bool excludingDesktopWindows, bool onScreenWindowsOnly) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("getShareableContent") || !desktop_.permissions.screenRecording) return {};
    ShareableContent content;
    for (const Window* window : desktop_.windows()) {
        if (!isSelected(*window, excludingDesktopWindows, onScreenWindowsOnly)) continue;
        ShareableWindow shareable{.windowId = window->number(),
                                  .windowLayer = window->layer(),
                                  .owningProcessId = {},
                                  .frame = window->frame()};
        if (window->owner()) shareable.owningProcessId = window->owner()->pid();
        content.windows.push_back(shareable);
    }
    for (const SimulatedDesktop::Display& display : desktop_.displays) {
        content.displays.push_back({display.id, display.bounds});
    }
    return content;
}

std::unique_ptr<CapturedImage> SimulatedScreenCapture::captureImage(
    const ShareableWindow& window, const StreamConfiguration& configuration) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("captureImage") || !desktop_.permissions.screenRecording) return nullptr;
    if (!isImageSize(configuration.width, configuration.height)) return nullptr;
    const auto windows = desktop_.windows();
    const auto found = std::ranges::find(windows, window.windowId, &Window::number);
    if (found == windows.end()) return nullptr;
    return std::make_unique<PictureImage>(
        drawWindow(**found, configuration.width, configuration.height));
}

std::unique_ptr<CapturedImage> SimulatedScreenCapture::captureDisplayImage(
    const ShareableDisplay& display, const StreamConfiguration& configuration) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("captureDisplayImage") || !desktop_.permissions.screenRecording) {
        return nullptr;
    }
    if (!isImageSize(configuration.width, configuration.height)) return nullptr;
    return std::make_unique<PictureImage>(
        drawScreen(desktop_.windows(), display.frame, configuration.width, configuration.height));
}

std::string SimulatedScreenCapture::pngRepresentation(const CapturedImage& image) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("pngRepresentation")) return {};
    return encodePng(static_cast<const PictureImage&>(image).picture());
}

}  // namespace quil::simulated
