#pragma once

namespace httplib {
struct Request;
}  // namespace httplib

namespace tolvane::sim {

// Closes the TCP connection a request arrived on, from inside its handler, so that the client
// sees the connection end before a single byte of reply. httplib answers every request once the
// handler returns; that answer then goes nowhere. Works for HTTP and HTTPS listeners alike.
// False when the connection could not be found.
bool closeConnectionOf(const httplib::Request& request);

}  // namespace tolvane::sim
