#include "platform/linux/x11/pasteboard/clipboard_server.h"

#include <algorithm>
#include <future>
#include <system_error>
#include <utility>

#include "platform/linux/x11/pasteboard/selection_reader.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;
/// For the text that follows a clearing.
constexpr milliseconds kOfferFollows{20};
constexpr auto kNever = SelectionWindow::Clock::time_point::max();
/// For the clipboard manager to begin, and to take what it asks for. Some never say that they have.
constexpr milliseconds kManagerStartTimeout{500};
constexpr milliseconds kManagerTimeout{2000};
/// Between looks at who is fetching.
constexpr milliseconds kStep{20};

}  // namespace

ClipboardServer::ClipboardServer(std::shared_ptr<X11Connection> connection)
    : connection_(std::move(connection)),
      clipboard_(connection_->atom("CLIPBOARD")),
      window_(connection_, [this](const xcb_generic_event_t& event) { handle(event); }),
      responder_(window_, contents_) {}

std::unique_ptr<ClipboardServer> ClipboardServer::start(std::shared_ptr<X11Connection> connection) {
    std::unique_ptr<ClipboardServer> server(new ClipboardServer(std::move(connection)));
    if (!server->wake_.isValid()) return nullptr;
    try {
        server->thread_ = std::thread([&server = *server] { server.run(); });
    } catch (const std::system_error&) {
        return nullptr;
    }
    return server;
}

ClipboardServer::~ClipboardServer() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard guard(lock_);
        isEnding_ = true;
    }
    wake_.set();
    thread_.join();
}

template <typename Result>
Result ClipboardServer::onThread(std::function<Result()> task) {
    std::packaged_task<Result()> packaged(std::move(task));
    auto result = packaged.get_future();
    {
        const std::lock_guard guard(lock_);
        tasks_.push_back([&packaged] { packaged(); });
    }
    wake_.set();
    return result.get();
}

std::optional<std::string> ClipboardServer::text() {
    return onThread<std::optional<std::string>>([this]() -> std::optional<std::string> {
        window_.handleEvents();
        if (clearsAt_) return {};
        if (!contents_.isOwned()) return readSelection(window_, clipboard_);
        const SharedText text = contents_.current();
        return text ? std::optional(*text) : std::nullopt;
    });
}

bool ClipboardServer::isOffering() {
    return onThread<bool>([this] {
        window_.handleEvents();
        return contents_.isOwned() && contents_.current() != nullptr;
    });
}

void ClipboardServer::clear(Clock::time_point deadline) {
    onThread<void>([this, deadline] {
        finishTransfers(deadline);
        clearTime_ = window_.serverTime();
        clearsAt_ = Clock::now() + kOfferFollows;
    });
}

bool ClipboardServer::offer(std::string text) {
    const auto shared = std::make_shared<const std::string>(std::move(text));
    return onThread<bool>([this, shared] {
        clearsAt_.reset();
        return take(shared, window_.serverTime());
    });
}

/// The server leaves the clipboard to a program that has taken it since.
void ClipboardServer::clearNow() {
    clearsAt_.reset();
    take(nullptr, clearTime_);
}

/// A client that is slow asks for the next form at a time at which something else is on offer.
void ClipboardServer::finishTransfers(Clock::time_point deadline) {
    window_.handleEvents();
    while (connection_->isAlive() && Clock::now() < deadline) {
        const auto quiet = responder_.quietFrom();
        if (quiet <= Clock::now()) return;
        const auto nothing = [](const xcb_generic_event_t&) { return false; };
        window_.waitFor(nothing, std::min({quiet, deadline, Clock::now() + kStep}));
    }
}

/// Asks the clipboard manager to take the text, by the protocol that freedesktop.org describes
/// ("ClipboardManager"), and serves it until it has.
void ClipboardServer::handOver() {
    if (clearsAt_) return clearNow();
    if (!contents_.current()) return;
    const xcb_atom_t manager = connection_->atom("CLIPBOARD_MANAGER");
    const auto owner = connection_->reply(xcb_get_selection_owner_reply,
                                          xcb_get_selection_owner(connection_->get(), manager));
    if (!owner || owner->owner == XCB_WINDOW_NONE) return;
    const xcb_atom_t property = connection_->atom("QUIL_SELECTION");
    const xcb_atom_t form = connection_->atom("UTF8_STRING");
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, window_.id(), property,
                        XCB_ATOM_ATOM, 32, 1, &form);
    xcb_convert_selection(connection_->get(), window_.id(), manager,
                          connection_->atom("SAVE_TARGETS"), property, window_.serverTime());
    const auto isDone = [&](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7f) != XCB_SELECTION_NOTIFY) return false;
        return reinterpret_cast<const xcb_selection_notify_event_t&>(event).selection == manager;
    };
    const auto start = Clock::now();
    for (auto end = start + kManagerStartTimeout; Clock::now() < end;) {
        if (window_.waitFor(isDone, std::min(end, Clock::now() + kStep))) return;
        end = std::min(start + kManagerTimeout, std::max(end, responder_.quietFrom()));
    }
}

bool ClipboardServer::take(SharedText text, xcb_timestamp_t time) {
    if (time == 0) return false;
    xcb_set_selection_owner(connection_->get(), window_.id(), clipboard_, time);
    // Offered before any client can ask: requests are handled on this thread.
    contents_.offer(time, std::move(text));
    const auto owner = connection_->reply(xcb_get_selection_owner_reply,
                                          xcb_get_selection_owner(connection_->get(), clipboard_));
    const bool isOurs = owner && owner->owner == window_.id();
    if (!isOurs) contents_.lose();
    return isOurs;
}

void ClipboardServer::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7f) {
        case XCB_SELECTION_REQUEST: {
            const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
            if (request.selection != clipboard_) break;
            if (clearsAt_) clearNow();
            responder_.respond(request);
            break;
        }
        case XCB_SELECTION_CLEAR: {
            const auto& clear = reinterpret_cast<const xcb_selection_clear_event_t&>(event);
            if (clear.selection == clipboard_) contents_.loseAt(clear.time);
            break;
        }
        case XCB_PROPERTY_NOTIFY:
            responder_.propertyChanged(reinterpret_cast<const xcb_property_notify_event_t&>(event));
            break;
        case XCB_DESTROY_NOTIFY:
            responder_.windowDestroyed(
                reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
            break;
        default:
            break;
    }
}

void ClipboardServer::run() {
    for (;;) {
        bool isEnding = false;
        for (const auto& task : takeTasks(isEnding)) task();
        if (isEnding) return handOver();
        window_.handleEvents();
        if (clearsAt_ && *clearsAt_ <= Clock::now()) clearNow();
        responder_.abandonStalled();
        window_.sleepUntil(std::min(responder_.nextDeadline(), clearsAt_.value_or(kNever)),
                           wake_.descriptor());
    }
}

std::vector<std::function<void()>> ClipboardServer::takeTasks(bool& isEnding) {
    wake_.clear();
    const std::lock_guard guard(lock_);
    isEnding = isEnding_;
    return std::exchange(tasks_, {});
}

}  // namespace quil::linux_platform
