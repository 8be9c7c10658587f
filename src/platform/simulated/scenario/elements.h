#pragma once

#include <functional>
#include <vector>

#include "platform/simulated/application.h"
#include "platform/simulated/scenario/names.h"

namespace quil::simulated {

/// Something being built on a desktop. What mentions other elements waits until all of them exist.
class Building {
  public:
    explicit Building(SimulatedDesktop& desktopToUse) : desktop(desktopToUse) {}

    /// Puts a step off until all elements exist.
    void later(std::function<void()> step) { steps_.push_back(std::move(step)); }
    /// Does what was put off, in order: all elements exist now.
    void finish();

    SimulatedDesktop& desktop;

  private:
    std::vector<std::function<void()>> steps_;
};

/// What one member of a scenario's element, window or application does to it.
using Setting = std::function<void(Building&, Element&)>;

/// A member of elements, windows or applications.
struct Member {
    std::string_view name;
    /// What can have it; members of elements are members of windows and applications, too.
    Kind kind;
    Setting (*read)(const Node& node, Names& names);
};

/// The members that all elements have, in the order in which they take effect.
const std::vector<Member>& elementMembers();

/// Reads the members of an element, a window or an application, and knows `others` to be read
/// elsewhere.
std::vector<Setting> readMembers(const Node& node, Kind kind, Names& names,
                                 std::vector<std::string_view> others);
/// Reads the members with which the thing of that id is to be changed.
std::vector<Setting> readUpdate(const Node& node, const Node& id, Names& names);

/// Gives the element what these members say, in order.
void apply(const std::vector<Setting>& settings, Building& building, Element& element);

/// A new element, window or application. Made once, it can be built any number of times.
/// `parent` is where a new element goes.
std::function<void(Building&, Element& parent)> readElement(const Node& node, Names& names);
/// `owner` is null for a window without an application.
std::function<void(Building&, Application* owner)> readWindow(const Node& node, Names& names);
/// When an application with its process id runs already, that one comes to the front instead.
std::function<void(Building&)> readApplication(const Node& node, Names& names);
/// The process id of an application; fails when it has none.
std::int32_t readProcessId(const Node& node);

}  // namespace quil::simulated
