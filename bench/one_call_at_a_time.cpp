/// Walks the tree of an application's window on the accessibility bus with one synchronous call at
/// a time, as libatspi does for its callers, and reads of every element what an observation reads.
///
/// usage: one_call_at_a_time PID
/// Writes the number of elements and the seconds that the walk took.
#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

struct MessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

constexpr const char* kRoot = "/org/a11y/atspi/accessible/root";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
const std::string kAtspi = "org.a11y.atspi.";

struct Element {
    std::string busName;
    std::string path;
};

class Walk {
  public:
    explicit Walk(sd_bus* bus) : bus_(bus) {}

    template <typename... Values>
    Message call(const Element& element, const std::string& interface, const char* member,
                 const char* signature = "", Values... values) {
        sd_bus_message* reply = nullptr;
        sd_bus_call_method(bus_, element.busName.c_str(), element.path.c_str(), interface.c_str(),
                           member, nullptr, &reply, signature, values...);
        return Message(reply);
    }

    Message property(const Element& element, const char* interface, const char* name) {
        return call(element, kProperties, "Get", "ss", (kAtspi + interface).c_str(), name);
    }

    std::vector<Element> children(const Element& element) {
        const Message reply = call(element, kAtspi + "Accessible", "GetChildren");
        std::vector<Element> children;
        if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "(so)") < 0) return {};
        const char* name = nullptr;
        const char* path = nullptr;
        while (sd_bus_message_read(reply.get(), "(so)", &name, &path) > 0) {
            children.push_back({name, path});
        }
        return children;
    }

    bool isActive(const Element& window) {
        const Message reply = call(window, kAtspi + "Accessible", "GetState");
        const void* words = nullptr;
        std::size_t size = 0;
        return reply && sd_bus_message_read_array(reply.get(), 'u', &words, &size) >= 0 &&
               size >= 4 && (*static_cast<const std::uint32_t*>(words) & 2U);
    }

    bool hasInterface(const Message& interfaces, const std::string& name) {
        if (!interfaces) return false;
        sd_bus_message_rewind(interfaces.get(), 1);
        sd_bus_message_enter_container(interfaces.get(), 'a', "s");
        const char* entry = nullptr;
        while (sd_bus_message_read_basic(interfaces.get(), 's', &entry) > 0) {
            if (kAtspi + name == entry) return true;
        }
        return false;
    }

    void visit(const Element& element) {
        ++count_;
        call(element, kAtspi + "Accessible", "GetRole");
        property(element, "Accessible", "Name");
        property(element, "Accessible", "Description");
        property(element, "Accessible", "AccessibleId");
        call(element, kAtspi + "Accessible", "GetState");
        const Message interfaces = call(element, kAtspi + "Accessible", "GetInterfaces");
        if (hasInterface(interfaces, "EditableText")) {
            call(element, kAtspi + "Text", "GetText", "ii", 0, -1);
        } else if (hasInterface(interfaces, "Value")) {
            property(element, "Value", "CurrentValue");
        }
        if (hasInterface(interfaces, "Component")) {
            call(element, kAtspi + "Component", "GetExtents", "u", 0U);
        }
        if (hasInterface(interfaces, "Action")) call(element, kAtspi + "Action", "GetActions");
        for (const Element& child : children(element)) visit(child);
    }

    int count() const { return count_; }

  private:
    sd_bus* bus_;
    int count_ = 0;
};

sd_bus* accessibilityBus() {
    sd_bus* session = nullptr;
    sd_bus_message* reply = nullptr;
    const char* address = nullptr;
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&session) < 0 ||
        sd_bus_call_method(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                           nullptr, &reply, "") < 0 ||
        sd_bus_message_read(reply, "s", &address) < 0 || sd_bus_new(&bus) < 0 ||
        sd_bus_set_address(bus, address) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0) {
        return nullptr;
    }
    return bus;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fputs("usage: one_call_at_a_time PID\n", stderr);
        return 2;
    }
    sd_bus* bus = accessibilityBus();
    if (!bus) {
        std::fputs("one_call_at_a_time: there is no accessibility bus\n", stderr);
        return 1;
    }
    const auto pid = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    Walk walk(bus);
    for (const Element& application : walk.children({"org.a11y.atspi.Registry", kRoot})) {
        const Message owner =
            walk.call({"org.freedesktop.DBus", "/"}, "org.freedesktop.DBus",
                      "GetConnectionUnixProcessID", "s", application.busName.c_str());
        std::uint32_t found = 0;
        if (!owner || sd_bus_message_read(owner.get(), "u", &found) < 0 || found != pid) continue;
        for (const Element& window : walk.children(application)) {
            if (!walk.isActive(window)) continue;
            const auto begin = std::chrono::steady_clock::now();
            walk.visit(window);
            const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
            std::printf("%d %.6f\n", walk.count(), seconds.count());
            return 0;
        }
    }
    std::fprintf(stderr, "one_call_at_a_time: process %u has no active window there\n", pid);
    return 1;
}
