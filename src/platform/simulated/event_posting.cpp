#include "platform/simulated/input_effects.h"
#include "platform/simulated/services.h"

namespace quil::simulated {
namespace {

struct Source : EventSource {
    explicit Source(std::int32_t sourceState) : state(sourceState) {}
    const std::int32_t state;
};

struct Event : PostableEvent {
    PostedEvent content;
};

PostedEvent& contentOf(PostableEvent& event) {
    return static_cast<Event&>(event).content;
}

std::unique_ptr<Event> makeEvent(const EventSource* source, std::uint32_t type) {
    auto event = std::make_unique<Event>();
    event->content.type = type;
    if (source) event->content.sourceState = static_cast<const Source*>(source)->state;
    return event;
}

}  // namespace

std::unique_ptr<EventSource> SimulatedEventPosting::createSource(std::int32_t state) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("createSource")) return nullptr;
    return std::make_unique<Source>(state);
}

PostableEventRef SimulatedEventPosting::createMouseEvent(EventSource* source, std::uint32_t type,
                                                         Point point, std::uint32_t button) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("createMouseEvent", {eventTypeName(type)})) return nullptr;
    auto event = makeEvent(source, type);
    event->content.location = point;
    event->content.button = button;
    return event;
}

PostableEventRef SimulatedEventPosting::createScrollWheelEvent(
    EventSource* source, std::uint32_t units, std::uint32_t wheelCount, std::int32_t wheel1,
    std::int32_t wheel2, std::int32_t wheel3) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("createScrollWheelEvent")) return nullptr;
    auto event = makeEvent(source, kEventScrollWheel);
    event->content.units = units;
    event->content.wheelCount = wheelCount;
    event->content.wheel1 = wheel1;
    event->content.wheel2 = wheelCount > 1 ? wheel2 : 0;
    event->content.wheel3 = wheelCount > 2 ? wheel3 : 0;
    return event;
}

PostableEventRef SimulatedEventPosting::createKeyboardEvent(EventSource* source,
                                                            std::uint16_t keyCode, bool keyDown) {
    const auto guard = desktop_.lock();
    const std::uint32_t type = keyDown ? kEventKeyDown : kEventKeyUp;
    if (desktop_.enter("createKeyboardEvent", {eventTypeName(type)})) return nullptr;
    auto event = makeEvent(source, type);
    event->content.keyCode = keyCode;
    return event;
}

void SimulatedEventPosting::setLocation(PostableEvent& event, Point point) {
    contentOf(event).location = point;
}

void SimulatedEventPosting::setFlags(PostableEvent& event, std::uint64_t flags) {
    contentOf(event).flags = flags;
}

void SimulatedEventPosting::setIntegerValueField(PostableEvent& event, std::uint32_t field,
                                                 std::int64_t value) {
    if (field == kMouseEventClickState) contentOf(event).clickState = value;
}

void SimulatedEventPosting::keyboardSetUnicodeString(PostableEvent& event,
                                                     std::u16string_view text) {
    contentOf(event).text = text;
}

void SimulatedEventPosting::post(std::uint32_t tapLocation, const PostableEvent& event) {
    const auto guard = desktop_.lock();
    PostedEvent posted = static_cast<const Event&>(event).content;
    posted.tapLocation = tapLocation;
    if (desktop_.enter("post", {eventTypeName(posted.type)})) return;
    desktop_.record(posted);
    if (desktop_.postedInputActs) actUpon(desktop_, posted);
}

std::optional<std::string> SimulatedPasteboard::stringForType(std::string_view type) {
    const auto guard = desktop_.lock();
    std::optional<std::string> text;
    if (!desktop_.enter("stringForType", {type})) {
        const auto found = desktop_.pasteboard.find(type);
        if (found != desktop_.pasteboard.end()) text = found->second;
    }
    desktop_.record(PasteboardCall{.operation = PasteboardCall::Operation::stringForType,
                                   .type = std::string(type),
                                   .text = text});
    return text;
}

void SimulatedPasteboard::clearContents() {
    const auto guard = desktop_.lock();
    if (!desktop_.enter("clearContents")) desktop_.pasteboard.clear();
    desktop_.record(PasteboardCall{});
}

bool SimulatedPasteboard::setString(std::string_view text, std::string_view type) {
    const auto guard = desktop_.lock();
    const bool accepted = !desktop_.enter("setString", {type});
    if (accepted) desktop_.pasteboard.insert_or_assign(std::string(type), std::string(text));
    desktop_.record(PasteboardCall{.operation = PasteboardCall::Operation::setString,
                                   .type = std::string(type),
                                   .text = std::string(text),
                                   .accepted = accepted});
    return accepted;
}

}  // namespace quil::simulated
