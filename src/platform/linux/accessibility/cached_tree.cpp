#include "platform/linux/accessibility/cached_tree.h"

#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {

CachedTree::CachedTree(AccessibilityBus& bus, AtspiProgram& program) {
    program.peer().call("/org/a11y/atspi/cache", "org.a11y.atspi.Cache", "GetItems",
                        [&](Reply reply) {
                            if (reply.message && !read(reply.message)) facts_.clear();
                        });
    bus.waitForReplies();
    linkChildren();
}

/// False for a reply of another form: older and newer programs have other lists.
bool CachedTree::read(sd_bus_message* message) {
    constexpr const char* kItem = "(so)(so)(so)iiassusau";
    if (sd_bus_message_enter_container(message, 'a', "((so)(so)(so)iiassusau)") < 0) return false;
    while (sd_bus_message_enter_container(message, 'r', kItem) > 0) {
        auto element = readReference(message);
        const auto application = readReference(message);
        auto parent = readReference(message);
        const auto index = readInt32(message);
        const auto count = readInt32(message);
        const auto interfaces = readInterfaces(message);
        auto name = readString(message);
        const auto role = readUint32(message);
        auto description = readString(message);
        const auto states = readStates(message);
        if (!element || !application || !parent || !index || !count || !interfaces || !name ||
            !role || !description || !states || sd_bus_message_exit_container(message) < 0) {
            return false;
        }
        Facts& facts = facts_[*element];
        facts.role = static_cast<AtspiRole>(*role);
        facts.name = std::move(*name);
        facts.description = std::move(*description);
        facts.states = *states;
        facts.interfaces = *interfaces;
        facts.childCount = *count;
        for (const Fact fact :
             {Fact::role, Fact::name, Fact::description, Fact::states, Fact::interfaces}) {
            facts.received(fact, 0);
        }
        children_[*parent].push_back({std::move(*element), *index});
    }
    return true;
}

/// Children are listed under their parents when every index has exactly one of them. Otherwise (the
/// list leaves some out, or the tree was changing) they have to be asked for.
void CachedTree::linkChildren() {
    for (auto& [element, facts] : facts_) {
        if (facts.childCount < 0 || facts.states.has(AtspiState::managesDescendants)) continue;
        const auto known = children_.find(element);
        const std::size_t count = known == children_.end() ? 0 : known->second.size();
        if (count != static_cast<std::size_t>(facts.childCount)) continue;
        std::vector<Reference> children(count);
        bool isComplete = true;
        for (std::size_t i = 0; i < count && isComplete; ++i) {
            const auto& [reference, index] = known->second[i];
            isComplete = index >= 0 && static_cast<std::size_t>(index) < count &&
                         children[static_cast<std::size_t>(index)].path.empty();
            if (isComplete) children[static_cast<std::size_t>(index)] = reference;
        }
        if (!isComplete) continue;
        facts.children = std::move(children);
        facts.received(Fact::childCount, 0);
        facts.received(Fact::children, 0);
    }
    children_.clear();
}

const Facts* CachedTree::find(const Reference& element) const {
    const auto found = facts_.find(element);
    return found == facts_.end() ? nullptr : &found->second;
}

}  // namespace quil::linux_platform
