#pragma once

#include <curl/curl.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <string>

#include "net/cpr_error.h"

namespace tolvane::net {

// Header names compare without regard to case, as HTTP does.
struct CaseInsensitiveLess {
    bool operator()(const std::string& left, const std::string& right) const;
};
using HeaderMap = std::map<std::string, std::string, CaseInsensitiveLess>;

struct CurlResponse {
    long statusCode = 0;  // 0 when no HTTP exchange took place
    std::string body;
    CprErrorCode errorCode = CprErrorCode::OK;
    std::string errorMessage;  // libcurl's text for the failure; empty on success
    std::string effectiveUrl;
    long newConnections = 0;  // connections this transfer had to open (0: one was reused)
};

// One libcurl easy handle and the options of the next request. The handle outlives each
// request, so its connection cache, DNS cache and TLS session cache serve the next request
// to the same host; options are re-applied from scratch every time.
class CurlSession {
public:
    // Largest reply body taken in. The platform's largest replies (category trees) are tens of
    // kilobytes; a longer one is refused as it arrives (REQUEST_CANCELLED), so a hostile or
    // broken server can't make the module hold more than this.
    static constexpr std::size_t kMaxReplyBytes = 8 * 1024 * 1024;

    CurlSession();
    ~CurlSession();
    CurlSession(CurlSession&& other) noexcept;
    CurlSession& operator=(CurlSession&& other) noexcept;
    CurlSession(const CurlSession&) = delete;
    CurlSession& operator=(const CurlSession&) = delete;

    void setUrl(std::string url);
    // Already percent-encoded; appended to the URL after "?" when non-empty.
    void setQuery(std::string encodedQuery);
    // Body of the next POST, sent as it is.
    void setBody(std::string body);
    void setHeaders(HeaderMap headers);
    // Limit for the whole transfer; 0 means none.
    void setTimeoutMs(long timeoutMs);
    // Used for http and https alike; empty means no proxy of our own.
    void setProxy(std::string proxy);
    // PEM file of certificate authorities trusted beside the system's; empty: none.
    void setCaFile(std::string caFile);

    // The URL as it goes out: the URL, then "?" and the query when there is one.
    std::string fullUrl() const;

    CurlResponse get();
    // Sent at most once: when a kept connection dies before any reply, libcurl's resend on a new
    // connection is refused and the call fails (REQUEST_CANCELLED). A GET is resent.
    CurlResponse post();

    // From any thread: the transfer in flight ends at once and every later one fails at its
    // start, both as REQUEST_CANCELLED. For shutting down; there is no way back.
    void abort();

private:
    CurlResponse perform(bool isPost);
    // curl_easy_perform, on a multi handle of our own, so that abort() can wake it up.
    CURLcode performAbortable();
    void release();

    CURL* handle_ = nullptr;
    CURLM* multi_ = nullptr;  // holds the connection cache between requests, as the easy one did
    std::atomic<bool> aborted_{false};
    curl_slist* headerList_ = nullptr;
    std::string url_;
    std::string query_;
    std::string body_;
    HeaderMap headers_;
    long timeoutMs_ = 0;
    std::string proxy_;
    std::string caFile_;
};

}  // namespace tolvane::net
