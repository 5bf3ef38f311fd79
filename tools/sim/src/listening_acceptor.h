#pragma once

#include <asio.hpp>
#include <system_error>

namespace tolvane::sim {

// Opens, binds and listens in one step, closing again on any failure, so that a server whose
// port is taken reports it instead of holding a half-open acceptor. The address is reusable,
// since a restarted barrage server takes its old port back while the old sockets linger.
inline bool listenOn(asio::ip::tcp::acceptor& acceptor, const asio::ip::tcp::endpoint& endpoint) {
    std::error_code error;
    acceptor.open(endpoint.protocol(), error);
    if (!error) {
        acceptor.set_option(asio::ip::tcp::acceptor::reuse_address(true), error);
    }
    if (!error) {
        acceptor.bind(endpoint, error);
    }
    if (!error) {
        acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        std::error_code ignored;
        acceptor.close(ignored);
        return false;
    }
    return true;
}

}  // namespace tolvane::sim
