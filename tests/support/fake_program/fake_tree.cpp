#include "fake_tree.h"

#include <array>
#include <cstdlib>

namespace fake_program {
namespace {

constexpr const char* kRoot = "/org/a11y/atspi/accessible/root";
constexpr const char* kBelowRoot = "/org/a11y/atspi/accessible/";
constexpr const char* kNull = "/org/a11y/atspi/null";
constexpr const char* kPrefix = "org.a11y.atspi.";
constexpr const char* kAccessible = "org.a11y.atspi.Accessible";

std::string pathOf(int number) {
    return number == 0 ? kRoot : kBelowRoot + std::to_string(number);
}

void appendReference(sd_bus_message* reply, int number, const std::string& busName) {
    const bool isNull = number < 0;
    sd_bus_message_append(reply, "(so)", isNull ? "" : busName.c_str(),
                          isNull ? kNull : pathOf(number).c_str());
}

void appendStates(sd_bus_message* reply, const Json& element) {
    std::array<std::uint32_t, 2> words{};
    for (const std::size_t bit : element.value("states", std::vector<std::size_t>{8, 24, 25, 30})) {
        words[bit / 32] |= 1U << bit % 32;
    }
    sd_bus_message_append_array(reply, 'u', words.data(), sizeof words);
}

void appendInterfaces(sd_bus_message* reply, const Json& element) {
    sd_bus_message_open_container(reply, 'a', "s");
    sd_bus_message_append(reply, "s", "org.a11y.atspi.Accessible");
    for (const auto& name : element.value("interfaces", std::vector<std::string>{"Component"})) {
        sd_bus_message_append(reply, "s", (kPrefix + name).c_str());
    }
    sd_bus_message_close_container(reply);
}

std::vector<int> childrenOf(const Json& element) {
    return element.is_null() ? std::vector<int>() : element.value("children", std::vector<int>());
}

int countOf(const Json& element) {
    const auto count = element.find("count");
    return count != element.end() ? count->get<int>()
                                  : static_cast<int>(childrenOf(element).size());
}

std::string textOf(const Json& element, const char* member) {
    return element.value(member, std::string());
}

}  // namespace

Question Question::read(sd_bus_message* call) {
    Question question{sd_bus_message_get_path(call), sd_bus_message_get_interface(call),
                      sd_bus_message_get_member(call)};
    if (question.interface == "org.freedesktop.DBus.Properties") {
        const char* interface = "";
        const char* name = "*";
        sd_bus_message_read(call, "s", &interface);
        if (question.member != "GetAll") sd_bus_message_read(call, "s", &name);
        question.interface = interface;
        question.isProperty = question.member == "Get" || question.member == "GetAll";
        if (question.isProperty) question.member = name;
    } else if (sd_bus_message_has_signature(call, "i")) {
        sd_bus_message_read(call, "i", &question.argument);
    } else if (sd_bus_message_has_signature(call, "u")) {
        sd_bus_message_read(call, "u", &question.argument);
    }
    return question;
}

std::string Question::text() const {
    const bool isIndexed = !isProperty && (member == "GetName" || member == "GetChildAtIndex");
    return isIndexed ? member + " " + std::to_string(argument) : member;
}

const Json* FakeTree::find(const std::string& path) const {
    const std::string_view below = kBelowRoot;
    if (path.compare(0, below.size(), below) != 0) return nullptr;
    const std::size_t number = path == kRoot ? 0 : std::strtoul(&path[below.size()], nullptr, 10);
    const Json& elements = description_["elements"];
    return number < elements.size() && elements[number].is_object() ? &elements[number] : nullptr;
}

bool FakeTree::isNearRoot(const std::string& path) const {
    return path == pathOf(0) || path == pathOf(1);
}

void FakeTree::change(const Json& elements) {
    for (const auto& [number, difference] : elements.items()) {
        description_["elements"][std::stoul(number)].merge_patch(difference);
    }
}

bool FakeTree::answer(sd_bus_message* reply, const Json& element, const Question& question,
                      const Context& context) const {
    if (!question.isProperty) {
        return question.interface == kAccessible
                   ? answerAccessible(reply, element, question, context)
                   : answerOther(reply, element, question, context);
    }
    if (question.member != "*") return answerProperty(reply, element, question.member);
    if (!has("getAll")) return false;
    sd_bus_message_open_container(reply, 'a', "{sv}");
    for (const char* name : {"Name", "Description", "AccessibleId", "ChildCount"}) {
        if (element.contains("errors") && element["errors"].contains(name)) continue;
        sd_bus_message_open_container(reply, 'e', "sv");
        sd_bus_message_append(reply, "s", name);
        answerProperty(reply, element, name);
        sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
    return true;
}

bool FakeTree::answerProperty(sd_bus_message* reply, const Json& element,
                              const std::string& name) const {
    const auto text = [&](const std::string& value) {
        return sd_bus_message_append(reply, "v", "s", value.c_str()) >= 0;
    };
    const auto number = [&](std::size_t value) {
        return sd_bus_message_append(reply, "v", "i", static_cast<int>(value)) >= 0;
    };
    if (name == "Name") return text(textOf(element, "name"));
    if (name == "Description") return text(textOf(element, "description"));
    if (name == "AccessibleId") return text(textOf(element, "id"));
    if (name == "ToolkitName") return text(description_["toolkit"]["name"]);
    if (name == "Version") return text(description_["toolkit"]["version"]);
    if (name == "ChildCount") return number(static_cast<std::size_t>(countOf(element)));
    if (name == "NActions") return number(element.value("actions", Json::array()).size());
    if (name == "CharacterCount") return number(textOf(element, "text").size());
    if (name == "CurrentValue") {
        return sd_bus_message_append(reply, "v", "d", element.value("number", 0.0)) >= 0;
    }
    return false;
}

bool FakeTree::answerAccessible(sd_bus_message* reply, const Json& element,
                                const Question& question, const Context& context) const {
    const std::string& member = question.member;
    if (member == "GetRole") {
        return sd_bus_message_append(reply, "u", element["role"].get<std::uint32_t>()) >= 0;
    }
    if (member == "GetState") {
        appendStates(reply, element);
    } else if (member == "GetInterfaces") {
        appendInterfaces(reply, element);
    } else if (member == "GetChildren" && has("getChildren")) {
        sd_bus_message_open_container(reply, 'a', "(so)");
        if (!element.contains("unlisted")) {
            for (const int child : childrenOf(element))
                appendReference(reply, child, context.busName);
        }
        sd_bus_message_close_container(reply);
    } else if (member == "GetChildAtIndex") {
        const auto children = childrenOf(element);
        const auto index = static_cast<std::size_t>(question.argument);
        appendReference(reply, index < children.size() ? children[index] : -1, context.busName);
    } else {
        return false;
    }
    return true;
}

bool FakeTree::answerOther(sd_bus_message* reply, const Json& element, const Question& question,
                           const Context& context) const {
    const std::string& member = question.member;
    if (member == "GetApplicationBusAddress") {
        if (!has("getAll")) return false;  // who has no sockets has no such question
        return sd_bus_message_append(reply, "s", context.socketAddress.c_str()) >= 0;
    }
    if (member == "GetExtents") {
        const auto extents = element.value("extents", std::array<int, 4>());
        const bool isOnScreen = question.argument == 0;
        const int x = extents[0] + (isOnScreen ? context.originX : 0);
        const int y = extents[1] + (isOnScreen ? context.originY : 0);
        return sd_bus_message_append(reply, "(iiii)", x, y, extents[2], extents[3]) >= 0;
    }
    if (member == "GetName") {
        const auto names = element.value("actions", std::vector<std::string>());
        const auto index = static_cast<std::size_t>(question.argument);
        return index < names.size() && sd_bus_message_append(reply, "s", names[index].c_str()) >= 0;
    }
    if (member == "GetText") {
        return sd_bus_message_append(reply, "s", textOf(element, "text").c_str()) >= 0;
    }
    return member == "Set";  // of the application's id
}

void FakeTree::answerCache(sd_bus_message* reply, const Context& context) const {
    const Json& elements = description_["elements"];
    struct Place {
        int parent = -1, index = -1;
    };
    std::vector<Place> places(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const auto children = childrenOf(elements[i]);
        for (std::size_t place = 0; place < children.size(); ++place) {
            if (children[place] < 0) continue;
            places[static_cast<std::size_t>(children[place])] = {static_cast<int>(i),
                                                                 static_cast<int>(place)};
        }
    }
    sd_bus_message_open_container(reply, 'a', "((so)(so)(so)iiassusau)");
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const Json& element = elements[i];
        if (!element.is_object() || element.value("uncached", false)) continue;
        sd_bus_message_open_container(reply, 'r', "(so)(so)(so)iiassusau");
        appendReference(reply, static_cast<int>(i), context.busName);
        appendReference(reply, 0, context.busName);
        appendReference(reply, places[i].parent, context.busName);
        sd_bus_message_append(reply, "ii", places[i].index, countOf(element));
        appendInterfaces(reply, element);
        sd_bus_message_append(reply, "sus", textOf(element, "name").c_str(),
                              element["role"].get<std::uint32_t>(),
                              textOf(element, "description").c_str());
        appendStates(reply, element);
        sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
}

}  // namespace fake_program
