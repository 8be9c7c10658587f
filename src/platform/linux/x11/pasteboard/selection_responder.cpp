#include "platform/linux/x11/pasteboard/selection_responder.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

/// More than this goes over in parts of this size, below what any server takes in one request.
constexpr std::size_t kPartBytes = std::size_t{128} << 10;
constexpr std::chrono::seconds kStalledTimeout{10};
/// After a client has asked what there is, it asks for that; after a text, perhaps for another
/// form.
constexpr std::chrono::milliseconds kTextFollows{1000};
constexpr std::chrono::milliseconds kFormFollows{100};
/// A slow client is given so many of its longest pauses between two requests.
constexpr int kPausesFollow = 3;

/// The forms of a text, and the type that each is written with. Few are listed, as some programs
/// fetch each one that is; the others are there for those who ask all the same.
struct Form {
    std::string_view target;
    std::string_view type;
    bool isListed;
};
constexpr Form kForms[] = {
    {"UTF8_STRING", "UTF8_STRING", true},
    {"STRING", "STRING", true},
    {"TEXT", "UTF8_STRING", false},
    {"text/plain;charset=utf-8", "text/plain;charset=utf-8", false},
    {"text/plain", "text/plain", false},
};

/// As Latin-1, which is what STRING means; a question mark for what it lacks.
SharedText latin1(std::string_view text) {
    std::string bytes;
    for (const char16_t unit : toUtf16(text)) {
        if (!isLowSurrogate(unit)) bytes.push_back(unit < 0x100 ? static_cast<char>(unit) : '?');
    }
    return std::make_shared<const std::string>(std::move(bytes));
}

}  // namespace

void SelectionResponder::respond(const xcb_selection_request_event_t& request) {
    // Old clients name no property and mean the target's name.
    const xcb_atom_t property = request.property != 0 ? request.property : request.target;
    const SharedText text = contents_.at(request.time);
    const bool converted = convert(request.requestor, request.target, property, text);
    noteFetch(request, text != nullptr);

    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = converted ? property : xcb_atom_t{XCB_ATOM_NONE};
    // An event on the wire has 32 bytes.
    char event[32] = {};
    std::copy_n(reinterpret_cast<const char*>(&notify), sizeof notify, event);
    xcb_send_event(connection_.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event);
    xcb_flush(connection_.get());
}

bool SelectionResponder::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                                 const SharedText& text) {
    if (target == connection_.atom("TARGETS")) {
        writeTargets(requestor, property, text != nullptr);
        return true;
    }
    if (target == connection_.atom("TIMESTAMP")) {
        const std::uint32_t time = contents_.ownedSince();
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property,
                            XCB_ATOM_INTEGER, 32, 1, &time);
        return true;
    }
    if (target == connection_.atom("MULTIPLE")) return convertMultiple(requestor, property, text);
    if (!text) return false;
    for (const Form& form : kForms) {
        if (target != connection_.atom(form.target)) continue;
        writeText(requestor, property, connection_.atom(form.type),
                  form.target == "STRING" ? latin1(*text) : text);
        return true;
    }
    return false;
}

/// The property holds pairs of a target and a property. What is not available is marked there.
bool SelectionResponder::convertMultiple(xcb_window_t requestor, xcb_atom_t property,
                                         const SharedText& text) {
    const auto list = connection_.reply(
        xcb_get_property_reply,
        xcb_get_property(connection_.get(), 0, requestor, property, XCB_ATOM_ANY, 0, 1024));
    if (!list || list->format != 32) return false;
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(list.get()));
    const auto count =
        static_cast<std::size_t>(xcb_get_property_value_length(list.get())) / sizeof(xcb_atom_t);
    std::vector<xcb_atom_t> pairs(atoms, atoms + count);
    const xcb_atom_t multiple = connection_.atom("MULTIPLE");
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        if (pairs[i] == multiple || !convert(requestor, pairs[i], pairs[i + 1], text)) {
            pairs[i] = XCB_ATOM_NONE;
        }
    }
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, list->type,
                        32, static_cast<std::uint32_t>(pairs.size()), pairs.data());
    return true;
}

void SelectionResponder::writeTargets(xcb_window_t requestor, xcb_atom_t property, bool hasText) {
    std::vector<xcb_atom_t> targets;
    for (const std::string_view name : {"TARGETS", "TIMESTAMP", "MULTIPLE"}) {
        targets.push_back(connection_.atom(name));
    }
    for (const Form& form : kForms) {
        if (hasText && form.isListed) targets.push_back(connection_.atom(form.target));
    }
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property,
                        XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(targets.size()),
                        targets.data());
}

void SelectionResponder::writeText(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                                   SharedText bytes) {
    if (bytes->size() <= kPartBytes) {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, type, 8,
                            static_cast<std::uint32_t>(bytes->size()), bytes->data());
        return;
    }
    watch(requestor, true);
    const auto size = static_cast<std::uint32_t>(bytes->size());
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property,
                        connection_.atom("INCR"), 32, 1, &size);
    transfers_.push_back(
        {requestor, property, type, std::move(bytes), 0, Clock::now() + kStalledTimeout});
}

void SelectionResponder::propertyChanged(const xcb_property_notify_event_t& event) {
    if (event.state != XCB_PROPERTY_DELETE) return;
    const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&](const auto& t) {
        return t.requestor == event.window && t.property == event.atom;
    });
    if (transfer == transfers_.end()) return;
    const std::size_t size = std::min(kPartBytes, transfer->bytes->size() - transfer->sent);
    // A part without content says that this was all.
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, transfer->requestor,
                        transfer->property, transfer->type, 8, static_cast<std::uint32_t>(size),
                        transfer->bytes->data() + transfer->sent);
    transfer->sent += size;
    transfer->deadline = Clock::now() + kStalledTimeout;
    if (size == 0) end(transfer);
    xcb_flush(connection_.get());
}

/// Remembers those alone that may still be fetching.
void SelectionResponder::noteFetch(const xcb_selection_request_event_t& request, bool hasText) {
    if (!hasText) return;
    const auto now = Clock::now();
    const bool isQuestion = request.target == connection_.atom("TARGETS") ||
                            request.target == connection_.atom("TIMESTAMP");
    const auto former = std::ranges::find(fetches_, request.requestor, &Fetch::requestor);
    Fetch fetch{request.requestor, now, !isQuestion, contents_.ownedSince(), {}};
    if (former != fetches_.end() && former->hasText) {
        fetch.hasText = true;
        if (former->offer == fetch.offer) {
            fetch.longestPause = std::max(former->longestPause, now - former->last);
        }
    }
    fetches_.remove_if([&](const Fetch& other) {
        return other.requestor == request.requestor || other.last + kTextFollows <= now;
    });
    fetches_.push_back(fetch);
}

SelectionResponder::Clock::time_point SelectionResponder::quietFrom() const {
    if (!transfers_.empty()) return Clock::time_point::max();
    auto quiet = Clock::time_point::min();
    for (const Fetch& fetch : fetches_) {
        const auto formFollows =
            std::max<Clock::duration>(kFormFollows, kPausesFollow * fetch.longestPause);
        quiet = std::max(quiet, fetch.last + (fetch.hasText ? formFollows : kTextFollows));
    }
    return quiet;
}

void SelectionResponder::windowDestroyed(xcb_window_t window) {
    fetches_.remove_if([&](const Fetch& fetch) { return fetch.requestor == window; });
    transfers_.remove_if([&](const Transfer& t) { return t.requestor == window; });
}

SelectionResponder::Clock::time_point SelectionResponder::nextDeadline() const {
    auto next = Clock::time_point::max();
    for (const Transfer& transfer : transfers_) next = std::min(next, transfer.deadline);
    return next;
}

void SelectionResponder::abandonStalled() {
    const auto now = Clock::now();
    for (auto transfer = transfers_.begin(); transfer != transfers_.end();) {
        const auto current = transfer++;
        if (current->deadline <= now) end(current);
    }
}

/// Which events of another client's window reach us; ours alone change.
void SelectionResponder::watch(xcb_window_t requestor, bool isWatched) {
    const std::uint32_t events =
        isWatched ? XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY
                  : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &events);
}

void SelectionResponder::end(std::list<Transfer>::iterator transfer) {
    const xcb_window_t requestor = transfer->requestor;
    transfers_.erase(transfer);
    const bool isStillWatched =
        std::any_of(transfers_.begin(), transfers_.end(),
                    [&](const auto& t) { return t.requestor == requestor; });
    if (!isStillWatched) watch(requestor, false);
}

}  // namespace quil::linux_platform
