#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

class Application;

/// Something that happens on the desktop. It runs inside the desktop's lock.
using Change = std::function<void(SimulatedDesktop&)>;

/// One element of an application's tree: a window, a button, a text field, the application itself.
/// It belongs to its parent; references stay good until the desktop ends, also after `remove`.
class Element : public AccessibilityElement, public std::enable_shared_from_this<Element> {
  public:
    Element(Element* parent, std::string_view role);
    ~Element() override;
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    // Attributes. Any name may hold any value, of a wrong type too.
    Element& attribute(std::string_view name, Value value);
    Element& withoutAttribute(std::string_view name);
    /// Reading that attribute succeeds and gives no value.
    Element& emptyAttribute(std::string_view name);
    Element& title(std::string text) { return attribute("AXTitle", std::move(text)); }
    Element& description(std::string text) { return attribute("AXDescription", std::move(text)); }
    Element& value(Value newValue) { return attribute("AXValue", std::move(newValue)); }
    Element& identifier(std::string text) { return attribute("AXIdentifier", std::move(text)); }
    Element& subrole(std::string text) { return attribute("AXSubrole", std::move(text)); }
    Element& enabled(bool isEnabled) { return attribute("AXEnabled", isEnabled); }
    /// Sets "AXPosition" and "AXSize".
    Element& bounds(Rect rect);
    /// Lets the element take the keyboard focus: gives it "AXFocused", false.
    Element& focusable() { return attribute("AXFocused", false); }

    // Result codes. They last until replaced; 0 makes the call work again.
    /// Reading that attribute gives `code`.
    Element& attributeResult(std::string_view name, std::int32_t code);
    /// Setting that attribute gives `code` and changes nothing.
    Element& setResult(std::string_view name, std::int32_t code);
    /// Asking for the action names gives `code`.
    Element& actionNamesResult(std::int32_t code);
    /// Asking for the action names gives this value, of a wrong type too.
    Element& actionNames(Value names);
    /// Performing that action gives `code` once it has been performed `afterTimes` more times.
    Element& actionResult(std::string_view name, std::int32_t code, int afterTimes = 0);

    // Behaviour.
    /// Offers the action; performing it does `effect`.
    Element& action(std::string name, Change effect = {});
    /// Setting that attribute, once the new value is stored, does `effect`.
    Element& whenSet(std::string_view attribute, Change effect);

    // The tree.
    /// A new last child.
    Element& element(std::string_view role);
    Element& element(std::string_view role, std::string titleText);
    /// Takes the element and all below it out of the tree; calls on them fail from now on.
    void remove();
    /// Gives the element the keyboard focus of its application.
    void focus();

    /// A name under which `SimulatedDesktop::find` finds the element.
    Element& id(std::string name);

    // State.
    const std::string& id() const { return id_; }
    std::string role() const;
    /// Null when the element has no such attribute of its own.
    const Value* find(std::string_view attributeName) const;
    /// The string that the attribute holds, else "".
    std::string text(std::string_view attributeName) const;
    /// "AXPosition" and "AXSize"; nothing when either is missing or of another type.
    std::optional<Rect> rectangle() const;
    bool hasAction(std::string_view name) const;
    bool exists() const;
    Element* parent() const { return parent_; }
    /// The application that the element belongs to; null for a window without an owner.
    Application* application();
    const std::vector<std::shared_ptr<Element>>& children() const { return children_; }
    ElementRef ref() const { return shared_from_this(); }

    // The calls of the accessibility service, without permissions and rules.
    virtual std::int32_t read(std::string_view attribute, std::optional<Value>& value) const;
    std::int32_t readActionNames(std::optional<Value>& names) const;
    std::int32_t perform(SimulatedDesktop& desktop, std::string_view action);
    std::int32_t set(SimulatedDesktop& desktop, std::string_view attribute, const Value& value);

    /// Drops all attributes, which may hold elements in a circle.
    void releaseValues();

  protected:
    void adopt(std::shared_ptr<Element> child);
    /// Told before a child leaves the tree.
    virtual void childRemoved(Element& child);

  private:
    struct Action {
        std::string name;
        Change effect;
        std::int32_t code = 0;
        int successesLeft = 0;  // before the code is given
    };
    Action* findAction(std::string_view name);
    const Action* findAction(std::string_view name) const;

    Element* parent_;
    std::string id_;
    bool removed_ = false;
    std::map<std::string, std::optional<Value>, std::less<>> attributes_;
    std::map<std::string, std::int32_t, std::less<>> attributeResults_;
    std::map<std::string, std::int32_t, std::less<>> setResults_;
    std::map<std::string, Change, std::less<>> setEffects_;
    std::optional<Value> actionNames_;
    std::int32_t actionNamesResult_ = 0;
    std::vector<Action> actions_;
    std::vector<std::shared_ptr<Element>> children_;
    std::vector<std::shared_ptr<Element>> removedChildren_;
};

}  // namespace quil::simulated
