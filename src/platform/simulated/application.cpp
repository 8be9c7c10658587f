#include "platform/simulated/application.h"

#include "platform/accessibility.h"
#include "platform/code_signing.h"
#include "platform/simulated/desktop.h"
#include "platform/window_list.h"

namespace quil::simulated {
namespace {

bool isWithin(const Element* element, const Element& ancestor) {
    for (; element; element = element->parent()) {
        if (element == &ancestor) return true;
    }
    return false;
}

std::int32_t readFocus(const Element* focused, std::optional<Value>& value) {
    if (!focused) return kAxNoValue;
    value = Value(focused->ref());
    return kAxSuccess;
}

}  // namespace

Window::Window(Application* owner, std::uint32_t number, std::string title, Rect frame)
    : Element(owner, "AXWindow"), owner_(owner), number_(number) {
    Element::title(std::move(title));
    bounds(frame);
}

Window& Window::layer(std::int64_t newLayer) {
    layer_ = newLayer;
    return *this;
}

Window& Window::onScreen(bool shown) {
    onScreen_ = shown;
    return *this;
}

Window& Window::desktopElement(bool isDesktopElement) {
    desktopElement_ = isDesktopElement;
    return *this;
}

Window& Window::colour(std::uint32_t rgb) {
    colour_ = rgb;
    return *this;
}

Window& Window::info(std::string_view key, Value value) {
    infoOverrides_.insert_or_assign(std::string(key), std::move(value));
    return *this;
}

Window& Window::withoutInfo(std::string_view key) {
    infoOverrides_.insert_or_assign(std::string(key), std::nullopt);
    return *this;
}

Value::Dictionary Window::info() const {
    const Rect rect = frame();
    Value::Dictionary info{
        {std::string(kWindowLayer), layer_},
        {std::string(kWindowNumber), std::int64_t{number_}},
        {std::string(kWindowName), text("AXTitle")},
        {std::string(kWindowBounds),
         Value::Dictionary{
             {"X", rect.x}, {"Y", rect.y}, {"Width", rect.width}, {"Height", rect.height}}},
    };
    if (owner_) {
        info.emplace(kWindowOwnerPid, owner_->pid());
        if (owner_->facts().localizedName) {
            info.emplace(kWindowOwnerName, *owner_->facts().localizedName);
        }
    }
    for (const auto& [key, value] : infoOverrides_) {
        if (value) {
            info.insert_or_assign(key, *value);
        } else {
            info.erase(key);
        }
    }
    return info;
}

Application::Application(SimulatedDesktop& desktop, std::int32_t pid, std::string name)
    : Element(nullptr, "AXApplication"), desktop_(desktop) {
    title(name);
    facts_.processIdentifier = pid;
    facts_.localizedName = std::move(name);
}

Application& Application::bundleIdentifier(std::optional<std::string> identifier) {
    facts_.bundleIdentifier = std::move(identifier);
    return *this;
}

Application& Application::executablePath(std::optional<std::string> path) {
    facts_.executablePath = std::move(path);
    return *this;
}

Application& Application::localizedName(std::optional<std::string> name) {
    facts_.localizedName = std::move(name);
    return *this;
}

Application& Application::activationPolicy(int policy) {
    facts_.activationPolicy = policy;
    return *this;
}

Application& Application::signing(std::optional<std::string> team,
                                  std::optional<std::string> identifier) {
    Value::Dictionary information;
    if (team) information.emplace(kCodeInfoTeamIdentifier, *team);
    if (identifier) information.emplace(kCodeInfoIdentifier, *identifier);
    return signingInformation(std::move(information));
}

Application& Application::signingInformation(Value information) {
    signing_ = std::move(information);
    return *this;
}

Window& Application::window(std::string title, Rect frame) {
    auto created =
        std::make_shared<Window>(this, desktop_.nextWindowNumber(), std::move(title), frame);
    Window& window = *created;
    adopt(created);
    desktop_.addWindow(std::move(created));
    if (!focusedWindow_) focusedWindow_ = &window;
    return window;
}

Application& Application::focusWindow(Element* window) {
    focusedWindow_ = window;
    return *this;
}

Application& Application::focusElement(Element* element) {
    if (focusedElement_ && focusedElement_->find("AXFocused")) focusedElement_->focusable();
    focusedElement_ = element;
    if (element) element->attribute("AXFocused", true);
    return *this;
}

Application& Application::activate() {
    desktop_.frontmost(this);
    return *this;
}

void Application::quit() {
    remove();
    desktop_.applicationEnded(*this);
}

std::int32_t Application::read(std::string_view attribute, std::optional<Value>& value) const {
    const std::int32_t own = Element::read(attribute, value);
    if (own != kAxAttributeUnsupported) return own;
    if (attribute == "AXFocusedWindow") return readFocus(focusedWindow_, value);
    if (attribute == "AXFocusedUIElement") return readFocus(focusedElement_, value);
    if (attribute == "AXWindows") {
        Value::List windows;
        for (const auto& child : children()) {
            if (dynamic_cast<const Window*>(child.get())) windows.emplace_back(child->ref());
        }
        value = Value(std::move(windows));
        return kAxSuccess;
    }
    return own;
}

void Application::childRemoved(Element& child) {
    if (isWithin(focusedElement_, child)) focusedElement_ = nullptr;
    if (focusedWindow_ != &child) return;
    focusedWindow_ = nullptr;
    for (const auto& other : children()) {
        if (other.get() != &child && dynamic_cast<Window*>(other.get())) {
            focusedWindow_ = other.get();
            return;
        }
    }
}

}  // namespace quil::simulated
