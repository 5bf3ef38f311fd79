#pragma once

#include <curl/curl.h>

namespace tolvane::net {

// Transport error codes in the numbering that callers of the request client already know:
// a made-up reply's "error" carries one of these when no HTTP exchange took place.
enum class CprErrorCode : int {
    OK = 0,
    CONNECTION_FAILURE = 1,
    EMPTY_RESPONSE = 2,
    HOST_RESOLUTION_FAILURE = 3,
    INTERNAL_ERROR = 4,
    INVALID_URL_FORMAT = 5,
    NETWORK_RECEIVE_ERROR = 6,
    NETWORK_SEND_FAILURE = 7,
    OPERATION_TIMEDOUT = 8,
    PROXY_RESOLUTION_FAILURE = 9,
    SSL_CONNECT_ERROR = 10,
    SSL_LOCAL_CERTIFICATE_ERROR = 11,
    SSL_REMOTE_CERTIFICATE_ERROR = 12,
    SSL_CACERT_ERROR = 13,
    GENERIC_SSL_ERROR = 14,
    UNSUPPORTED_PROTOCOL = 15,
    REQUEST_CANCELLED = 16,
    TOO_MANY_REDIRECTS = 17,
    UNKNOWN_ERROR = 1000,
};

// Folds a libcurl result into the code above; results with no counterpart become
// INTERNAL_ERROR, as they always have for these callers.
CprErrorCode cprErrorFromCurl(CURLcode code);

}  // namespace tolvane::net
