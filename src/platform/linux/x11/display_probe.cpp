#include "platform/linux/x11/display_probe.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace quil::linux_platform {
namespace {

/// X_TCP_PORT of Xproto.h: the port of display 0.
constexpr int kFirstPort = 6000;
/// This machine refuses within microseconds; one that takes longer is better left to a thread.
constexpr int kConnectTimeoutMilliseconds = 5;

/// Whether a connection was made, or is neither made nor refused.
template <typename Address>
bool mayListen(const Address& address, socklen_t length = sizeof(Address)) {
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    const int end = socket(generic->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (end < 0) return errno != EAFNOSUPPORT;
    int error = connect(end, generic, length) == 0 ? 0 : errno;
    if (error == EINPROGRESS) {
        pollfd waiting{end, POLLOUT, 0};
        socklen_t size = sizeof error;
        if (poll(&waiting, 1, kConnectTimeoutMilliseconds) > 0) {
            getsockopt(end, SOL_SOCKET, SO_ERROR, &error, &size);
        }
    }
    close(end);
    return error != ENOENT && error != ECONNREFUSED && error != EADDRNOTAVAIL &&
           error != ENETUNREACH;
}

bool mayListen(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    path.copy(address.sun_path, path.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    // A name in the file system ends with a NUL, an abstract one with its length.
    return mayListen(address, path.starts_with('\0') ? length : length + 1);
}

bool mayListenOnPort(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (mayListen(address)) return true;
    sockaddr_in6 address6{};
    address6.sin6_family = AF_INET6;
    address6.sin6_port = address.sin_port;
    address6.sin6_addr = in6addr_loopback;
    return mayListen(address6);
}

}  // namespace

bool mayHaveDisplay() {
    char* parsedHost = nullptr;
    int number = 0;
    if (!xcb_parse_display(nullptr, &parsedHost, &number, nullptr)) return false;
    const std::unique_ptr<char, decltype(&std::free)> owner(parsedHost, std::free);
    const std::string_view host(parsedHost);
    // Another machine, or a path.
    if (!host.empty() && host != "unix") return true;
    const std::string path = "/tmp/.X11-unix/X" + std::to_string(number);
    if (mayListen('\0' + path) || mayListen(path)) return true;
    return host.empty() && mayListenOnPort(kFirstPort + number);
}

}  // namespace quil::linux_platform
