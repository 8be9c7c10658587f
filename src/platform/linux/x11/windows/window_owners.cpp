#include "platform/linux/x11/windows/window_owners.h"

#include <unistd.h>

#include <array>
#include <climits>

namespace quil::linux_platform {
namespace {

std::string hostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

xcb_res_query_client_ids_cookie_t askForClient(X11Connection& connection, std::uint32_t resource) {
    const xcb_res_client_id_spec_t wanted{resource, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return xcb_res_query_client_ids(connection.get(), 1, &wanted);
}

std::optional<std::int32_t> processId(std::uint32_t number) {
    return number > 0 && number <= INT32_MAX ? std::optional(static_cast<std::int32_t>(number))
                                             : std::nullopt;
}

}  // namespace

WindowOwners::WindowOwners(X11Connection& connection, const std::vector<xcb_window_t>& windows)
    : connection_(connection), hostName_(hostName()) {
    if (!connection.hasExtension(xcb_res_id)) return;
    const auto ourselves =
        askForClient(connection, xcb_get_setup(connection.get())->resource_id_base);
    for (const xcb_window_t window : windows) cookies_.push_back(askForClient(connection, window));
    serverKnows_ = localClient(ourselves) == getpid();
}

std::optional<std::int32_t> WindowOwners::localClient(xcb_res_query_client_ids_cookie_t cookie) {
    const auto reply = connection_.reply(xcb_res_query_client_ids_reply, cookie);
    if (!reply) return {};
    for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0;
         xcb_res_client_id_value_next(&id)) {
        if (!(id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID)) continue;
        if (xcb_res_client_id_value_value_length(id.data) < 1) continue;
        return processId(*xcb_res_client_id_value_value(id.data));
    }
    return {};
}

std::optional<std::int32_t> WindowOwners::read(std::size_t index, const PropertyRequest& netWmPid,
                                               const PropertyRequest& wmClientMachine) {
    const auto known = cookies_.empty() ? std::nullopt : localClient(cookies_[index]);
    if (known && serverKnows_) return known;
    const auto machine = wmClientMachine.text();
    if (machine && *machine != hostName_) return {};
    return processId(netWmPid.number().value_or(0));
}

std::set<std::int32_t> processesOnDisplay(X11Connection& connection) {
    if (!connection.hasExtension(xcb_res_id)) return {};
    const auto reply = connection.reply(xcb_res_query_client_ids_reply,
                                        askForClient(connection, /*resource=*/XCB_NONE));
    std::set<std::int32_t> processes;
    if (!reply) return processes;
    for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0;
         xcb_res_client_id_value_next(&id)) {
        const bool isProcess = id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID &&
                               xcb_res_client_id_value_value_length(id.data) > 0;
        const auto pid =
            isProcess ? processId(*xcb_res_client_id_value_value(id.data)) : std::nullopt;
        if (pid) processes.insert(*pid);
    }
    return processes;
}

}  // namespace quil::linux_platform
