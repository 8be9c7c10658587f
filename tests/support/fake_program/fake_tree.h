#pragma once

#include <systemd/sd-bus.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

/// The elements of the fake program, and what each of them answers.
namespace fake_program {

using Json = nlohmann::json;

/// A call: "GetRole", "Name" (a property), "GetChildAtIndex 3".
struct Question {
    std::string path;
    std::string interface;
    /// The method; of a property, its name.
    std::string member;
    bool isProperty = false;
    int argument = 0;

    static Question read(sd_bus_message* call);
    std::string text() const;
};

/// A description, as test_accessibility_trees.py makes it:
///   toolkit     {"name", "version"}
///   elements    a list; 0 is the application, 1 its window; null for one that has gone. Members,
///   all
///               but "role" optional: role, name, description, id, states (bit numbers), interfaces
///               (without prefix), children (numbers; -1 for a null element), count (instead of how
///               many there are), extents (within the window), actions, text, number, errors
///               ({member: name of the error, or "" for no answer at all}), late (milliseconds),
///               uncached (true: the cache leaves it out), unlisted (true: `GetChildren` has none)
///   cache, getAll, getChildren    whether the program has these
class FakeTree {
  public:
    explicit FakeTree(Json description) : description_(std::move(description)) {}

    const Json& description() const { return description_; }
    /// The element at that path; null when there is none.
    const Json* find(const std::string& path) const;
    bool isNearRoot(const std::string& path) const;
    /// Changes elements: {number: what is different}.
    void change(const Json& elements);

    /// Fills in the answer; false when there is no such question here. `busName` is the program's.
    struct Context {
        std::string busName;
        std::string socketAddress;
        int originX, originY;
    };
    bool answer(sd_bus_message* reply, const Json& element, const Question& question,
                const Context& context) const;
    void answerCache(sd_bus_message* reply, const Context& context) const;

  private:
    bool answerProperty(sd_bus_message* reply, const Json& element, const std::string& name) const;
    bool answerAccessible(sd_bus_message* reply, const Json& element, const Question& question,
                          const Context& context) const;
    bool answerOther(sd_bus_message* reply, const Json& element, const Question& question,
                     const Context& context) const;
    bool has(const char* habit) const { return description_.value(habit, true); }

    Json description_;
};

}  // namespace fake_program
