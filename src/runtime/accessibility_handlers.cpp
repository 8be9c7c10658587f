#include "accessibility/ax_elements.h"
#include "runtime/gates.h"
#include "runtime/handlers.h"
#include "target/capture_target.h"
#include "text/characters.h"

namespace quil {
namespace {

Json nodesJson(const std::vector<AxNode>& nodes) {
    Json list = Json::array();
    for (const AxNode& node : nodes) list.push_back(axNodeJson(node));
    return list;
}

}  // namespace

void handleAxGetState(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto application = runtime.platform.workspace().frontmostApplication();
    if (!application || application->processIdentifier == 0) {
        runtime.responses.respond(
            id, {{"revision", ""}, {"nodes", Json::array()}, {"axText", ""}, {"truncated", false}});
        return;
    }
    const LastAxSnapshot snapshot =
        axSnapshot(runtime.platform.accessibility(), runtime.lastAxSnapshot,
                   application->processIdentifier, kAxMaximumNodes, kAxMaximumChars);
    Json nodes;
    const auto element = parameters.string("element");
    if (element && !isBlank(*element)) {
        const auto subtree = axSubtreeNodes(snapshot->nodes, *element);
        if (!subtree) throw AxError::unknownToken();
        nodes = nodesJson(*subtree);
    } else {
        nodes = nodesJson(snapshot->nodes);
    }
    Json result = {{"revision", snapshot->revision},
                   {"axText", snapshot->axText},
                   {"truncated", snapshot->truncated},
                   {"target", targetDictionary(frontmostTarget(runtime.platform))}};
    result["nodes"] = std::move(nodes);
    runtime.responses.respond(id, std::move(result));
}

void handleReadValue(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto token = parameters.string("token");
    if (!token) return runtime.responses.respondError(id, "token is required");
    const AxValueOutcome outcome = readAxValue(runtime.platform, runtime.lastAxSnapshot, *token);
    Json result = {{"target", targetDictionary(outcome.target)},
                   {"element", elementJson(outcome.node)},
                   {"value", nullptr}};
    setOptional(result, "value", outcome.value);
    runtime.responses.respond(id, std::move(result));
}

void handleAxAction(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto token = parameters.string("token");
    const auto action = parameters.string("action");
    if (!token || !action) {
        return runtime.responses.respondError(id, "token and action are required");
    }
    const AxOutcome outcome =
        performAxAction(runtime.platform, runtime.lastAxSnapshot, *token, *action,
                        parameters.string("value"), parameters.integer("amount"));
    runtime.responses.respond(id, {{"ok", true},
                                   {"target", targetDictionary(outcome.target)},
                                   {"element", elementJson(outcome.node)}});
}

}  // namespace quil
