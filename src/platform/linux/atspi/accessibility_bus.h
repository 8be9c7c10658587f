#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/atspi/bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// A program on the accessibility bus.
class AtspiProgram {
  public:
    explicit AtspiProgram(Peer& onBus) : onBus_(onBus) {}

    const std::string& busName() const { return onBus_.name(); }
    /// Where to call it: on a socket of its own when it has one, else on the bus.
    Peer& peer() const;
    Peer& onBus() const { return onBus_; }
    /// Its properties may be asked for all at once. Some programs die of that.
    bool givesAllProperties() const { return givesAllProperties_; }
    /// When it was first asked anything.
    BusDeadline firstContact() const { return firstContact_; }
    /// One reply (`Cache.GetItems`) has everything that it shows, which is about as much as before.
    /// Browsers have such replies, too, but go on to pages of any size.
    bool hasBoundedCache() const { return hasBoundedCache_; }
    /// Whether it is known to show so little in that window, its only one, that it can be asked for
    /// everything at once; nothing when that was not looked at.
    std::optional<bool> isSmall(const std::string& window) const {
        return window == countedWindow_ ? std::optional(isSmall_) : std::nullopt;
    }
    void noteSize(std::string window, bool isSmall) {
        countedWindow_ = std::move(window);
        isSmall_ = isSmall;
    }
    /// A document, by its path, that was waited for and stayed empty.
    bool staysEmpty(const std::string& document) const { return empty_.contains(document); }
    void noteEmpty(const std::string& document) { empty_.insert(document); }
    /// It gives positions within its windows only, not on the screen.
    bool hasWindowCoordinates() const { return hasWindowCoordinates_; }
    /// The coordinates to ask for: within the window if those are all that it knows, else the
    /// screen's (AtspiCoordType).
    std::uint32_t coordinateType() const { return hasWindowCoordinates_ ? 1 : 0; }
    /// Its units are so many whole pixels.
    bool hasWholeScales() const { return hasWholeScales_; }
    /// It is a Swing program, behind Java's bridge.
    bool isSwing() const { return isSwing_; }
    /// It calls a combo box by what is chosen in its list, and does not say so otherwise (Qt).
    bool namesCombosByChoice() const { return namesCombosByChoice_; }

  private:
    friend class AccessibilityBus;

    Peer& onBus_;
    bool isIntroduced_ = false;
    bool givesAllProperties_ = false;
    bool hasBoundedCache_ = false;
    bool hasWindowCoordinates_ = false;
    bool hasWholeScales_ = false;
    bool isSwing_ = false;
    bool namesCombosByChoice_ = false;
    BusDeadline firstContact_ = BusClock::now();
    std::string countedWindow_;
    bool isSmall_ = false;
    std::set<std::string> empty_;
    std::unique_ptr<Bus> socket_;
};

/// The accessibility bus and the programs on it. It is found through the session bus. Connections
/// are kept from one request to the next and made again when a bus has gone. While connected, we
/// count as an assistive program, so that toolkits show their trees.
class AccessibilityBus {
  public:
    /// Whether the session bus names an accessibility bus; it starts one when it can. Bounded.
    bool replies();
    /// Whether the accessibility bus can be used. Everything below needs that.
    bool connect();
    /// Which connection to the bus this is: names from an earlier one mean nothing any more.
    std::uint64_t generation() const { return generation_; }
    /// When the connection was made, and announced to toolkits.
    BusDeadline connectedSince() const { return connectedSince_; }

    Bus& bus() { return *bus_; }
    /// The program of that name, the same one for as long as the connection lives.
    AtspiProgram& program(const std::string& busName);
    /// The same, after it was asked about itself (once).
    AtspiProgram& introducedProgram(const std::string& busName);
    /// Asks these programs about themselves, all at a time, if they were not asked before.
    void introduce(const std::vector<std::string>& busNames);
    /// The programs that have registered, with their process ids, in the registry's order.
    struct Registered {
        std::string busName;
        std::optional<std::int32_t> pid;
    };
    std::vector<Registered> registeredPrograms();
    /// Asks the registry for the roots of the programs that have registered.
    void askPrograms(std::function<void(std::vector<Reference>)> handler);
    /// Asks the bus which process has that name; the handler gets nothing when none has.
    void askProcess(const std::string& busName,
                    std::function<void(std::optional<std::int32_t>)> handler);
    /// Has programs send these events, such as "object:state-changed:focused".
    void registerEvents(std::span<const char* const> events);

    /// The process id of a registered program.
    std::optional<std::int32_t> processId(const std::string& busName) const;

    /// Handles replies of all programs until every call has its reply; at the deadline those that
    /// are count as failed.
    void waitForReplies(BusDeadline deadline = BusDeadline::max());

  private:
    /// What a program says of itself.
    struct Introduction;
    std::optional<std::string> address();
    void announce();
    static void askAboutItself(AtspiProgram& program, Introduction& said);
    static void note(AtspiProgram& program, const Introduction& said);
    void drop();
    void forgetGonePrograms(const std::vector<Registered>& registered);

    std::unique_ptr<Bus> session_;
    std::unique_ptr<Bus> bus_;
    std::string connectedTo_;
    bool isAnnounced_ = false;
    std::uint64_t generation_ = 0;
    BusDeadline connectedSince_;
    std::map<std::string, AtspiProgram> programs_;
    /// Names are never used again while the bus lives.
    std::map<std::string, std::int32_t> processIds_;
};

}  // namespace quil::linux_platform
