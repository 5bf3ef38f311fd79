#include "net/cpr_error.h"

namespace tolvane::net {

CprErrorCode cprErrorFromCurl(CURLcode code) {
    switch (code) {
        case CURLE_OK:
            return CprErrorCode::OK;
        case CURLE_UNSUPPORTED_PROTOCOL:
            return CprErrorCode::UNSUPPORTED_PROTOCOL;
        case CURLE_URL_MALFORMAT:
            return CprErrorCode::INVALID_URL_FORMAT;
        case CURLE_COULDNT_RESOLVE_PROXY:
            return CprErrorCode::PROXY_RESOLUTION_FAILURE;
        case CURLE_COULDNT_RESOLVE_HOST:
            return CprErrorCode::HOST_RESOLUTION_FAILURE;
        case CURLE_COULDNT_CONNECT:
            return CprErrorCode::CONNECTION_FAILURE;
        case CURLE_OPERATION_TIMEDOUT:
            return CprErrorCode::OPERATION_TIMEDOUT;
        case CURLE_SSL_CONNECT_ERROR:
            return CprErrorCode::SSL_CONNECT_ERROR;
        // Since libcurl 7.62 CURLE_SSL_CACERT is the same number as this one: an
        // untrusted server certificate is a remote certificate error.
        case CURLE_PEER_FAILED_VERIFICATION:
            return CprErrorCode::SSL_REMOTE_CERTIFICATE_ERROR;
        case CURLE_ABORTED_BY_CALLBACK:
        case CURLE_WRITE_ERROR:
            return CprErrorCode::REQUEST_CANCELLED;
        case CURLE_GOT_NOTHING:
            return CprErrorCode::EMPTY_RESPONSE;
        case CURLE_SEND_ERROR:
            return CprErrorCode::NETWORK_SEND_FAILURE;
        case CURLE_RECV_ERROR:
            return CprErrorCode::NETWORK_RECEIVE_ERROR;
        case CURLE_SSL_CERTPROBLEM:
            return CprErrorCode::SSL_LOCAL_CERTIFICATE_ERROR;
        case CURLE_SSL_ENGINE_NOTFOUND:
        case CURLE_SSL_ENGINE_SETFAILED:
        case CURLE_SSL_CIPHER:
        case CURLE_USE_SSL_FAILED:
        case CURLE_SSL_ENGINE_INITFAILED:
        case CURLE_SSL_SHUTDOWN_FAILED:
            return CprErrorCode::GENERIC_SSL_ERROR;
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_CRL_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
            return CprErrorCode::SSL_CACERT_ERROR;
        case CURLE_TOO_MANY_REDIRECTS:
            return CprErrorCode::TOO_MANY_REDIRECTS;
        default:
            return CprErrorCode::INTERNAL_ERROR;
    }
}

}  // namespace tolvane::net
