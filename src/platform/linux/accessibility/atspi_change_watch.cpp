#include "platform/linux/accessibility/atspi_change_watch.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

/// Toolkits send only events that a client has registered for. A class stands for all of its
/// events.
constexpr const char* kEventClasses[] = {"object:", "window:", "document:"};
constexpr const char* kEventInterfaces[] = {
    "org.a11y.atspi.Event.Object", "org.a11y.atspi.Event.Window", "org.a11y.atspi.Event.Document"};

}  // namespace

std::unique_ptr<AtspiChangeWatch> AtspiChangeWatch::begin(std::int32_t pid) {
    std::unique_ptr<AtspiChangeWatch> watch(new AtspiChangeWatch(pid));
    watch->watchActiveWindow();
    if (pid != 0) watch->listen();
    if (!watch->hasBus_ && !watch->server_) return nullptr;
    return watch;
}

void AtspiChangeWatch::watchActiveWindow() {
    server_ = X11Connection::open();
    if (!server_) return;
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(server_->get(), server_->root(), XCB_CW_EVENT_MASK, &mask);
    server_->sync();
}

void AtspiChangeWatch::listen() {
    if (!bus_.connect()) return;
    hasBus_ = true;
    Bus& bus = bus_.bus();
    for (const char* interface : kEventInterfaces) {
        bus.listen(std::string("type='signal',interface='") + interface + "'",
                   [this](sd_bus_message* signal) {
                       if (const char* sender = sd_bus_message_get_sender(signal)) {
                           eventFrom(sender);
                       }
                   });
    }
    bus_.registerEvents(kEventClasses);
}

void AtspiChangeWatch::eventFrom(const std::string& busName) {
    const auto [entry, isNew] = isWatched_.try_emplace(busName);
    if (isNew) return learnProcess(busName);
    if (entry->second.value_or(false)) noticed_ = true;
}

void AtspiChangeWatch::learnProcess(const std::string& busName) {
    bus_.askProcess(busName, [this, busName](std::optional<std::int32_t> pid) {
        const bool isOurs = pid && (*pid == pid_ || isDescendantOf(*pid, pid_));
        isWatched_[busName] = isOurs;
        if (isOurs) noticed_ = true;
    });
}

/// Processes what has arrived. Whether something was noticed since the last call.
bool AtspiChangeWatch::process() {
    if (hasBus_ && !bus_.bus().isAlive()) hasBus_ = false;
    if (server_) {
        const xcb_atom_t active = server_->atom("_NET_ACTIVE_WINDOW");
        while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(server_->get())}) {
            const auto type = event->response_type & 0x7F;
            if (type == XCB_PROPERTY_NOTIFY) {
                const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
                noticed_ = noticed_ || change.atom == active;
            } else if (type == XCB_MAP_NOTIFY || type == XCB_UNMAP_NOTIFY) {
                // Menus are windows that no window manager lists.
                noticed_ = true;
            }
        }
        if (!server_->isAlive()) server_ = nullptr;
    }
    return std::exchange(noticed_, false);
}

bool AtspiChangeWatch::wait(std::uint64_t microseconds) {
    const auto deadline = BusClock::now() + std::chrono::microseconds(microseconds);
    for (;;) {
        if (process()) return true;
        const auto left = std::chrono::ceil<milliseconds>(deadline - BusClock::now());
        if (left <= milliseconds(0)) return false;
        std::vector<pollfd> descriptors;
        if (hasBus_) descriptors.push_back(bus_.bus().waiting());
        if (server_) {
            descriptors.push_back({xcb_get_file_descriptor(server_->get()), POLLIN, 0});
        }
        poll(descriptors.data(), descriptors.size(),
             static_cast<int>(std::min(left, milliseconds(60'000)).count()));
    }
}

}  // namespace quil::linux_platform
