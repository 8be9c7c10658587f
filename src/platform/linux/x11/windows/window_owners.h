#pragma once

#include <xcb/res.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {

/// Requests for the processes that windows belong to, sent for all windows at once.
class WindowOwners {
  public:
    WindowOwners(X11Connection& connection, const std::vector<xcb_window_t>& windows);

    /// The process of the n-th window; absent when it runs on another machine or is unknown. What
    /// the server knows of its clients counts (X-Resource 1.2). A server in another process
    /// namespace counts processes differently and one without the extension not at all; then what
    /// the client says of itself counts, unless it says that it runs elsewhere. To be asked once
    /// for each window, in order.
    std::optional<std::int32_t> read(std::size_t index, const PropertyRequest& netWmPid,
                                     const PropertyRequest& wmClientMachine);

  private:
    std::optional<std::int32_t> localClient(xcb_res_query_client_ids_cookie_t cookie);

    X11Connection& connection_;
    std::string hostName_;
    std::vector<xcb_res_query_client_ids_cookie_t> cookies_;
    bool serverKnows_ = false;
};

/// The processes on this machine that are clients of the server; none when it does not tell.
std::set<std::int32_t> processesOnDisplay(X11Connection& connection);

}  // namespace quil::linux_platform
