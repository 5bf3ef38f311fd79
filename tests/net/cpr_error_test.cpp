#include <gtest/gtest.h>

#include "net/cpr_error.h"

using tolvane::net::CprErrorCode;
using tolvane::net::cprErrorFromCurl;

TEST(CprError, MapsEveryCurlResultItKnows) {
    const struct {
        CURLcode curl;
        CprErrorCode expected;
    } cases[] = {
        {CURLE_OK, CprErrorCode::OK},
        {CURLE_UNSUPPORTED_PROTOCOL, CprErrorCode::UNSUPPORTED_PROTOCOL},
        {CURLE_URL_MALFORMAT, CprErrorCode::INVALID_URL_FORMAT},
        {CURLE_COULDNT_RESOLVE_PROXY, CprErrorCode::PROXY_RESOLUTION_FAILURE},
        {CURLE_COULDNT_RESOLVE_HOST, CprErrorCode::HOST_RESOLUTION_FAILURE},
        {CURLE_COULDNT_CONNECT, CprErrorCode::CONNECTION_FAILURE},
        {CURLE_OPERATION_TIMEDOUT, CprErrorCode::OPERATION_TIMEDOUT},
        {CURLE_SSL_CONNECT_ERROR, CprErrorCode::SSL_CONNECT_ERROR},
        {CURLE_PEER_FAILED_VERIFICATION, CprErrorCode::SSL_REMOTE_CERTIFICATE_ERROR},
        {CURLE_ABORTED_BY_CALLBACK, CprErrorCode::REQUEST_CANCELLED},
        {CURLE_WRITE_ERROR, CprErrorCode::REQUEST_CANCELLED},
        {CURLE_GOT_NOTHING, CprErrorCode::EMPTY_RESPONSE},
        {CURLE_SSL_ENGINE_NOTFOUND, CprErrorCode::GENERIC_SSL_ERROR},
        {CURLE_SSL_ENGINE_SETFAILED, CprErrorCode::GENERIC_SSL_ERROR},
        {CURLE_SEND_ERROR, CprErrorCode::NETWORK_SEND_FAILURE},
        {CURLE_RECV_ERROR, CprErrorCode::NETWORK_RECEIVE_ERROR},
        {CURLE_SSL_CERTPROBLEM, CprErrorCode::SSL_LOCAL_CERTIFICATE_ERROR},
        {CURLE_SSL_CIPHER, CprErrorCode::GENERIC_SSL_ERROR},
        {CURLE_USE_SSL_FAILED, CprErrorCode::GENERIC_SSL_ERROR},
        {CURLE_SSL_ENGINE_INITFAILED, CprErrorCode::GENERIC_SSL_ERROR},
        {CURLE_SSL_SHUTDOWN_FAILED, CprErrorCode::GENERIC_SSL_ERROR},
        {CURLE_SSL_CACERT_BADFILE, CprErrorCode::SSL_CACERT_ERROR},
        {CURLE_SSL_CRL_BADFILE, CprErrorCode::SSL_CACERT_ERROR},
        {CURLE_SSL_ISSUER_ERROR, CprErrorCode::SSL_CACERT_ERROR},
        {CURLE_TOO_MANY_REDIRECTS, CprErrorCode::TOO_MANY_REDIRECTS},
        // Results without a counterpart.
        {CURLE_FAILED_INIT, CprErrorCode::INTERNAL_ERROR},
        {CURLE_OUT_OF_MEMORY, CprErrorCode::INTERNAL_ERROR},
        {CURLE_HTTP_RETURNED_ERROR, CprErrorCode::INTERNAL_ERROR},
        {CURLE_PARTIAL_FILE, CprErrorCode::INTERNAL_ERROR},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cprErrorFromCurl(c.curl), c.expected) << "CURLcode " << c.curl;
    }
}
