/// A program on the accessibility bus that can behave in every way that real ones do, and worse. It
/// counts what it is asked.
///
/// Standard input: first the description (fake_tree.h) in one line, with these members besides:
///   title, socket (true: it has a socket of its own), shuffle (a seed: answers come out of order),
///   signals (true: it sends signals in between), busy (microseconds that each answer takes)
/// then commands, each answered by one line: {"elements": {number: what is different}} changes the
/// tree; every command tells the calls since the last one: {"calls", "most" (of one element),
/// "repeated" (questions that one element was asked twice; not of the application and its window),
/// "origin" (where its window is)}.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <list>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <unordered_map>

#include "fake_tree.h"
#include "fake_window.h"

namespace fake_program {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr int kCallsBetweenSignals = 7;
/// How long calls that arrive together are collected, when the answers are to be out of order.
constexpr milliseconds kShuffled{1};

class Program {
  public:
    Program(Json description)
        : tree_(std::move(description)),
          window_(text("title"), extents()[2], extents()[3]),
          random_(tree_.description().value("shuffle", 0U)) {
        if (tree_.description().value("socket", false)) listen();
        join();
    }

    void run() {
        std::cout << Json{{"window", window_.id()}} << std::endl;
        for (std::string line; !isOver_;) {
            bool isBusy = false;
            for (sd_bus* bus : buses_) isBusy = sd_bus_process(bus, nullptr) > 0 || isBusy;
            answerDue();
            if (!isBusy) wait();
        }
    }

  private:
    std::string text(const char* member) const { return tree_.description()[member]; }
    std::array<int, 4> extents() const { return tree_.description()["elements"][1]["extents"]; }

    void join() {
        sd_bus* session = nullptr;
        sd_bus_message* reply = nullptr;
        const char* address = nullptr;
        sd_bus_open_user(&session);
        sd_bus_call_method(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                           nullptr, &reply, "");
        sd_bus_message_read(reply, "s", &address);
        sd_bus* bus = nullptr;
        sd_bus_new(&bus);
        sd_bus_set_address(bus, address);
        sd_bus_set_bus_client(bus, 1);
        add(bus);
        const char* name = nullptr;
        sd_bus_get_unique_name(bus, &name);
        busName_ = name;
        // The registry asks back before it answers.
        sd_bus_call_method_async(bus, nullptr, "org.a11y.atspi.Registry",
                                 "/org/a11y/atspi/accessible/root", "org.a11y.atspi.Socket",
                                 "Embed", nullptr, nullptr, "(so)", name,
                                 "/org/a11y/atspi/accessible/root");
        sd_bus_message_unref(reply);
        sd_bus_close_unref(session);
    }

    void add(sd_bus* bus) {
        sd_bus_start(bus);
        sd_bus_add_filter(bus, nullptr, handle, this);
        buses_.push_back(bus);
    }

    void listen() {
        sockaddr_un place{};
        place.sun_family = AF_UNIX;
        const std::string path = "/tmp/fake-program-" + std::to_string(getpid());
        path.copy(place.sun_path, sizeof place.sun_path - 1);
        listening_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        unlink(path.c_str());
        if (bind(listening_, reinterpret_cast<sockaddr*>(&place), sizeof place) == 0 &&
            ::listen(listening_, 4) == 0) {
            socketAddress_ = "unix:path=" + path;
        }
    }

    void accept() {
        const int client = accept4(listening_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (client < 0) return;
        unlink(&socketAddress_[socketAddress_.find('/')]);
        sd_bus* bus = nullptr;
        sd_id128_t id;
        sd_id128_randomize(&id);
        sd_bus_new(&bus);
        sd_bus_set_fd(bus, client, client);
        sd_bus_set_server(bus, 1, id);
        add(bus);
    }

    static int handle(sd_bus_message* message, void* userdata, sd_bus_error*) {
        if (!sd_bus_message_is_method_call(message, nullptr, nullptr)) return 0;
        if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Peer", nullptr)) return 0;
        static_cast<Program*>(userdata)->take(message);
        return 1;
    }

    void take(sd_bus_message* call) {
        const Question question = Question::read(call);
        note(question);
        const Json* element = tree_.find(question.path);
        auto due = Clock::now();
        if (tree_.description().contains("shuffle")) due += kShuffled;
        if (element) due += milliseconds(element->value("late", 0));
        held_.push_back({due, random_(), sd_bus_message_ref(call), question});
    }

    void note(const Question& question) {
        ++calls_;
        if (question.interface == "org.a11y.atspi.Application") return;
        if (!tree_.isNearRoot(question.path)) ++asked_[question.path][question.text()];
    }

    /// Answers the calls whose time has come; of those that have it together, in any order.
    void answerDue() {
        const auto now = Clock::now();
        std::vector<Held> due;
        for (auto call = held_.begin(); call != held_.end();) {
            const auto next = std::next(call);
            if (call->due <= now) {
                due.push_back(*call);
                held_.erase(call);
            }
            call = next;
        }
        if (tree_.description().contains("shuffle")) {
            std::sort(due.begin(), due.end(), [](auto& a, auto& b) { return a.rank < b.rank; });
        }
        for (const Held& call : due) {
            answer(call.message, call.question);
            sd_bus_message_unref(call.message);
        }
    }

    void answer(sd_bus_message* call, const Question& question) {
        if (const int busy = tree_.description().value("busy", 0)) {
            std::this_thread::sleep_for(microseconds(busy));
        }
        const Json* element = tree_.find(question.path);
        const Json errors = element ? element->value("errors", Json::object()) : Json::object();
        const FakeTree::Context context{busName_, socketAddress_, window_.x(), window_.y()};
        sd_bus_message* reply = nullptr;
        const char* error = nullptr;
        if (errors.contains(question.member)) {
            const std::string name = errors[question.member];
            if (!name.empty()) sd_bus_reply_method_errorf(call, name.c_str(), "as described");
            return;
        }
        sd_bus_message_new_method_return(call, &reply);
        if (question.member == "GetItems" && tree_.description().value("cache", false)) {
            tree_.answerCache(reply, context);
        } else if (!element) {
            error = SD_BUS_ERROR_UNKNOWN_OBJECT;
        } else if (!tree_.answer(reply, *element, question, context)) {
            error = SD_BUS_ERROR_UNKNOWN_METHOD;
        }
        if (error) {
            sd_bus_reply_method_errorf(call, error, "no such thing");
        } else {
            sd_bus_send(nullptr, reply, nullptr);
        }
        sd_bus_message_unref(reply);
        if (tree_.description().value("signals", false) && calls_ % kCallsBetweenSignals == 0) {
            sd_bus_emit_signal(buses_.back(), question.path.c_str(), "org.a11y.atspi.Event.Object",
                               "StateChanged", "siiv", "showing", 1, 0, "i", 0);
        }
    }

    void wait() {
        std::vector<pollfd> waiting{
            {STDIN_FILENO, POLLIN, 0}, {window_.descriptor(), POLLIN, 0}, {listening_, POLLIN, 0}};
        for (sd_bus* bus : buses_) {
            const int events = sd_bus_get_events(bus);
            waiting.push_back(
                {events < 0 ? -1 : sd_bus_get_fd(bus), static_cast<short>(events), 0});
        }
        int timeout = -1;
        for (const Held& call : held_) {
            const auto left = std::chrono::ceil<milliseconds>(call.due - Clock::now());
            const int bounded = std::max(0, static_cast<int>(left.count()));
            timeout = timeout < 0 ? bounded : std::min(timeout, bounded);
        }
        poll(waiting.data(), waiting.size(), timeout);
        if (waiting[1].revents) window_.update();
        if (waiting[2].revents) accept();
        std::string line;
        if (waiting[0].revents) {
            isOver_ = !std::getline(std::cin, line);
            if (!isOver_) command(Json::parse(line));
        }
    }

    void command(const Json& command) {
        if (command.contains("elements")) tree_.change(command["elements"]);
        int most = 0;
        Json repeated = Json::array();
        for (const auto& [path, questions] : asked_) {
            int calls = 0;
            for (const auto& [question, times] : questions) {
                calls += times;
                if (times > 1) repeated.push_back({path, question, times});
            }
            most = std::max(most, calls);
        }
        const Json origin{window_.x(), window_.y()};
        std::cout << Json{{"calls", calls_},
                          {"most", most},
                          {"repeated", repeated},
                          {"origin", origin}}
                  << std::endl;
        asked_.clear();
        calls_ = 0;
    }

    struct Held {
        Clock::time_point due;
        std::mt19937::result_type rank;
        sd_bus_message* message;
        Question question;
    };

    FakeTree tree_;
    FakeWindow window_;
    std::mt19937 random_;
    std::list<sd_bus*> buses_;
    std::string busName_;
    int listening_ = -1;
    std::string socketAddress_;
    std::list<Held> held_;
    bool isOver_ = false;
    int calls_ = 0;
    std::unordered_map<std::string, std::unordered_map<std::string, int>> asked_;
};

}  // namespace
}  // namespace fake_program

int main() {
    std::string line;
    if (!std::getline(std::cin, line)) return 2;
    fake_program::Program(fake_program::Json::parse(line)).run();
}
