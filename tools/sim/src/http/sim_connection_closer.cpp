#include "http/sim_connection_closer.h"

#include <httplib.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

namespace tolvane::sim {

namespace {

int portOf(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET) {
        return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
    }
    if (address.ss_family == AF_INET6) {
        return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
    }
    return -1;
}

// httplib does not hand the socket to handlers, so it is found among the process's descriptors
// by its two ports. The client may live in this process too; its end of the same connection has
// the ports the other way round, and a listening socket has no peer. Descriptor numbers are
// probed directly rather than listed from /proc, which would open (and close) a descriptor of
// its own while other threads open theirs.
int findConnection(int localPort, int remotePort) {
    rlimit limit{};
    const int highest = getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < 65536
                            ? static_cast<int>(limit.rlim_cur)
                            : 65536;
    for (int fd = 0; fd < highest; ++fd) {
        sockaddr_storage local{};
        sockaddr_storage remote{};
        socklen_t localSize = sizeof(local);
        socklen_t remoteSize = sizeof(remote);
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localSize) == 0 &&
            portOf(local) == localPort &&
            getpeername(fd, reinterpret_cast<sockaddr*>(&remote), &remoteSize) == 0 &&
            portOf(remote) == remotePort) {
            return fd;
        }
    }
    return -1;
}

}  // namespace

bool closeConnectionOf(const httplib::Request& request) {
    const int fd = findConnection(request.local_port, request.remote_port);
    if (fd < 0) {
        return false;
    }
    // The handler runs on the thread that owns this connection, which keeps the descriptor open
    // until the handler returns; httplib's server ignores SIGPIPE, so its answer on the shut-down
    // socket fails quietly and it closes the descriptor itself as for any ended connection.
    return shutdown(fd, SHUT_RDWR) == 0;
}

}  // namespace tolvane::sim
