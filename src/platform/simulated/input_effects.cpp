#include "platform/simulated/input_effects.h"

#include <utility>

#include "platform/event_posting.h"
#include "platform/simulated/desktop.h"
#include "platform/virtual_keys.h"
#include "text/characters.h"

namespace quil::simulated {
namespace {

/// Elements without bounds are looked into: groups often have none.
Element* elementAt(Element& element, Point point) {
    const auto rectangle = element.rectangle();
    if (rectangle && !rectangle->contains(point)) return nullptr;
    const auto& children = element.children();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (Element* found = elementAt(**child, point)) return found;
    }
    return rectangle ? &element : nullptr;
}

Element* elementAt(SimulatedDesktop& desktop, Point point) {
    for (Window* window : desktop.windows()) {
        if (!window->onScreen() || window->isDesktopElement()) continue;
        if (Element* found = elementAt(*window, point)) return found;
    }
    return nullptr;
}

template <typename Predicate>
Element* nearest(Element* element, Predicate predicate) {
    while (element && !predicate(*element)) element = element->parent();
    return element;
}

Element* buttonAt(SimulatedDesktop& desktop, Point point) {
    return nearest(elementAt(desktop, point), [](Element& e) { return e.hasAction("AXPress"); });
}

void pressButton(SimulatedDesktop& desktop, Point point) {
    Element* picked = elementAt(desktop, point);
    desktop.pressedButton = buttonAt(desktop, point);
    Element* found = nearest(picked, [](Element& e) { return dynamic_cast<Window*>(&e); });
    if (!found) return;
    Window& window = static_cast<Window&>(*found);
    desktop.raise(window);
    Application* application = window.owner();
    if (!application) return;
    application->activate().focusWindow(&window);
    Element* focus = nearest(picked, [](Element& e) { return e.find("AXFocused"); });
    if (focus) focus->focus();
}

void releaseButton(SimulatedDesktop& desktop, Point point) {
    Element* button = std::exchange(desktop.pressedButton, nullptr);
    if (!button || button != buttonAt(desktop, point)) return;
    const Value* enabled = button->find("AXEnabled");
    if (!enabled || enabled->boolean() != false) button->perform(desktop, "AXPress");
}

void showMenu(SimulatedDesktop& desktop, Point point) {
    Element* element =
        nearest(elementAt(desktop, point), [](Element& e) { return e.hasAction("AXShowMenu"); });
    if (element) element->perform(desktop, "AXShowMenu");
}

/// The focused element if it holds text.
Element* focusedText(SimulatedDesktop& desktop) {
    Application* application = desktop.frontmost();
    Element* element = application ? application->focusedElement() : nullptr;
    const Value* value = element ? element->find("AXValue") : nullptr;
    return value && value->string() ? element : nullptr;
}

void pressKey(SimulatedDesktop& desktop, const PostedEvent& event) {
    Element* element = focusedText(desktop);
    if (!element) return;
    std::string text = element->text("AXValue");
    if (event.text) {
        text += toUtf8(*event.text);
    } else if (event.keyCode == virtual_key::v && event.flags == kEventFlagMaskCommand) {
        text += desktop.pasteboardText().value_or("");
    } else if (event.keyCode == virtual_key::deleteKey && event.flags.value_or(0) == 0) {
        text.resize(characterPrefix(text, characterCount(text) - 1).size());
    } else {
        return;
    }
    element->set(desktop, "AXValue", text);
}

}  // namespace

void actUpon(SimulatedDesktop& desktop, const PostedEvent& event) {
    if (event.type == kEventLeftMouseDown) pressButton(desktop, event.location);
    if (event.type == kEventRightMouseDown) showMenu(desktop, event.location);
    if (event.type == kEventLeftMouseUp) releaseButton(desktop, event.location);
    if (event.type == kEventKeyDown) pressKey(desktop, event);
}

}  // namespace quil::simulated
