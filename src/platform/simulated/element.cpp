#include "platform/simulated/element.h"

#include <algorithm>

#include "platform/accessibility.h"
#include "platform/simulated/application.h"

namespace quil::simulated {
namespace {

/// Roles of elements that hold text; they can be given a value and the focus from the start.
constexpr std::string_view kTextRoles[] = {"AXTextField", "AXTextArea", "AXComboBox"};

std::int32_t resultFor(const std::map<std::string, std::int32_t, std::less<>>& results,
                       std::string_view name) {
    const auto entry = results.find(name);
    return entry == results.end() ? kAxSuccess : entry->second;
}

}  // namespace

Element::Element(Element* parent, std::string_view role) : parent_(parent) {
    attribute("AXRole", std::string(role));
    if (std::ranges::find(kTextRoles, role) != std::end(kTextRoles)) value("").focusable();
}

Element::~Element() = default;

Element& Element::attribute(std::string_view name, Value value) {
    attributes_.insert_or_assign(std::string(name), std::move(value));
    return *this;
}

Element& Element::withoutAttribute(std::string_view name) {
    const auto entry = attributes_.find(name);
    if (entry != attributes_.end()) attributes_.erase(entry);
    return *this;
}

Element& Element::emptyAttribute(std::string_view name) {
    attributes_.insert_or_assign(std::string(name), std::nullopt);
    return *this;
}

Element& Element::bounds(Rect rect) {
    attribute("AXPosition", Point{rect.x, rect.y});
    return attribute("AXSize", Size{rect.width, rect.height});
}

Element& Element::attributeResult(std::string_view name, std::int32_t code) {
    attributeResults_.insert_or_assign(std::string(name), code);
    return *this;
}

Element& Element::setResult(std::string_view name, std::int32_t code) {
    setResults_.insert_or_assign(std::string(name), code);
    return *this;
}

Element& Element::actionNamesResult(std::int32_t code) {
    actionNamesResult_ = code;
    return *this;
}

Element& Element::actionNames(Value names) {
    actionNames_ = std::move(names);
    return *this;
}

Element& Element::actionResult(std::string_view name, std::int32_t code, int afterTimes) {
    if (!findAction(name)) action(std::string(name));
    Action& found = *findAction(name);
    found.code = code;
    found.successesLeft = afterTimes;
    return *this;
}

Element& Element::action(std::string name, Change effect) {
    if (Action* found = findAction(name)) {
        found->effect = std::move(effect);
    } else {
        actions_.push_back({.name = std::move(name), .effect = std::move(effect)});
    }
    return *this;
}

Element& Element::whenSet(std::string_view attribute, Change effect) {
    setEffects_.insert_or_assign(std::string(attribute), std::move(effect));
    return *this;
}

Element& Element::element(std::string_view role) {
    adopt(std::make_shared<Element>(this, role));
    return *children_.back();
}

Element& Element::element(std::string_view role, std::string titleText) {
    return element(role).title(std::move(titleText));
}

void Element::remove() {
    if (removed_) return;
    removed_ = true;
    if (!parent_) return;
    for (Element* ancestor = parent_; ancestor; ancestor = ancestor->parent_) {
        ancestor->childRemoved(*this);
    }
    auto& siblings = parent_->children_;
    const auto self = std::ranges::find(siblings, this, &std::shared_ptr<Element>::get);
    parent_->removedChildren_.push_back(*self);
    siblings.erase(self);
}

void Element::focus() {
    if (Application* owner = application()) owner->focusElement(this);
}

Element& Element::id(std::string name) {
    id_ = std::move(name);
    return *this;
}

std::string Element::role() const {
    return text("AXRole");
}

const Value* Element::find(std::string_view attributeName) const {
    const auto entry = attributes_.find(attributeName);
    return entry == attributes_.end() || !entry->second ? nullptr : &*entry->second;
}

std::string Element::text(std::string_view attributeName) const {
    const Value* found = find(attributeName);
    return found && found->string() ? *found->string() : std::string();
}

std::optional<Rect> Element::rectangle() const {
    const Value* position = find("AXPosition");
    const Value* size = find("AXSize");
    if (!position || !position->point() || !size || !size->size()) return {};
    return Rect{position->point()->x, position->point()->y, size->size()->width,
                size->size()->height};
}

bool Element::hasAction(std::string_view name) const {
    return findAction(name) != nullptr;
}

bool Element::exists() const {
    return !removed_ && (!parent_ || parent_->exists());
}

Application* Element::application() {
    Element* root = this;
    while (root->parent_) root = root->parent_;
    return dynamic_cast<Application*>(root);
}

std::int32_t Element::read(std::string_view attribute, std::optional<Value>& value) const {
    if (!exists()) return kAxInvalidUIElement;
    if (const auto code = resultFor(attributeResults_, attribute)) return code;
    if (const auto entry = attributes_.find(attribute); entry != attributes_.end()) {
        value = entry->second;
        return kAxSuccess;
    }
    if (attribute == "AXChildren") {
        Value::List list;
        for (const auto& child : children_) list.emplace_back(child->ref());
        value = Value(std::move(list));
        return kAxSuccess;
    }
    return kAxAttributeUnsupported;
}

std::int32_t Element::readActionNames(std::optional<Value>& names) const {
    if (!exists()) return kAxInvalidUIElement;
    if (actionNamesResult_) return actionNamesResult_;
    if (actionNames_) {
        names = actionNames_;
        return kAxSuccess;
    }
    Value::List list;
    for (const Action& offered : actions_) list.emplace_back(offered.name);
    names = Value(std::move(list));
    return kAxSuccess;
}

std::int32_t Element::perform(SimulatedDesktop& desktop, std::string_view action) {
    if (!exists()) return kAxInvalidUIElement;
    Action* found = findAction(action);
    if (!found) return kAxActionUnsupported;
    if (found->code && found->successesLeft == 0) return found->code;
    if (found->successesLeft > 0) --found->successesLeft;
    // A copy, since the effect may give the element other actions.
    const Change effect = found->effect;
    if (effect) effect(desktop);
    return kAxSuccess;
}

std::int32_t Element::set(SimulatedDesktop& desktop, std::string_view attribute,
                          const Value& value) {
    if (!exists()) return kAxInvalidUIElement;
    if (const auto code = resultFor(setResults_, attribute)) return code;
    const auto entry = attributes_.find(attribute);
    if (entry == attributes_.end()) return kAxAttributeUnsupported;
    entry->second = value;
    if (attribute == "AXFocused" && value.boolean() == true) focus();
    const auto effect = setEffects_.find(attribute);
    if (effect != setEffects_.end()) Change(effect->second)(desktop);
    return kAxSuccess;
}

void Element::releaseValues() {
    attributes_.clear();
    actionNames_.reset();
    for (const auto* list : {&children_, &removedChildren_}) {
        for (const auto& child : *list) child->releaseValues();
    }
}

void Element::adopt(std::shared_ptr<Element> child) {
    children_.push_back(std::move(child));
}

void Element::childRemoved(Element&) {}

Element::Action* Element::findAction(std::string_view name) {
    const auto found = std::ranges::find(actions_, name, &Action::name);
    return found == actions_.end() ? nullptr : &*found;
}

const Element::Action* Element::findAction(std::string_view name) const {
    return const_cast<Element*>(this)->findAction(name);
}

}  // namespace quil::simulated
