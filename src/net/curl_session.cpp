#include "net/curl_session.h"

#include <array>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "tolvane_config/operation_abort.h"

namespace tolvane::net {
namespace {

// libcurl wants one global initialisation before any handle exists, and it is not
// thread-safe itself; the process keeps it until exit.
void ensureCurlGlobalInit() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

char lowerAscii(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// A URL without a scheme (a bare path when an environment lacks a service) would make
// libcurl guess "http://" and look its first segment up as a host name; refuse it here.
bool hasExplicitScheme(const std::string& url) {
    CURLU* parsed = curl_url();
    const bool ok = parsed != nullptr && curl_url_set(parsed, CURLUPART_URL, url.c_str(),
                                                      CURLU_NON_SUPPORT_SCHEME) == CURLUE_OK;
    curl_url_cleanup(parsed);
    return ok;
}

// The reply body as it arrives, up to the session's limit.
struct ReplySink {
    std::string* body;
    bool tooLarge = false;
};

size_t appendToBody(char* data, size_t size, size_t count, void* target) {
    auto* sink = static_cast<ReplySink*>(target);
    const size_t bytes = size * count;
    if (bytes > CurlSession::kMaxReplyBytes - sink->body->size()) {
        // A short count ends the transfer with a write error.
        sink->tooLarge = true;
        return 0;
    }
    sink->body->append(data, bytes);
    return bytes;
}

std::string curlVersionAgent() {
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    return std::string("curl/") + (info != nullptr ? info->version : "");
}

// When a reused connection dies after the request went out and before any byte of the reply,
// libcurl silently sends the request again on a new connection. The server may well have
// acted on the first copy, so a POST must not go out twice: this refuses a second send of the
// same hop, which ends the transfer as aborted. A followed redirect is a new request and passes.
// It hooks the handle for one perform and unhooks it when that ends.
class SingleSendGuard {
public:
    explicit SingleSendGuard(CURL* handle) : handle_(handle) {
        curl_easy_setopt(handle_, CURLOPT_PREREQFUNCTION, &SingleSendGuard::beforeSend);
        curl_easy_setopt(handle_, CURLOPT_PREREQDATA, this);
    }
    ~SingleSendGuard() {
        curl_easy_setopt(handle_, CURLOPT_PREREQFUNCTION, nullptr);
        curl_easy_setopt(handle_, CURLOPT_PREREQDATA, nullptr);
    }
    SingleSendGuard(const SingleSendGuard&) = delete;
    SingleSendGuard& operator=(const SingleSendGuard&) = delete;

private:
    // libcurl calls this once per attempt, on the connection the request is about to use.
    static int beforeSend(void* self, char*, char*, int, int) {
        auto* guard = static_cast<SingleSendGuard*>(self);
        long hop = 0;
        curl_easy_getinfo(guard->handle_, CURLINFO_REDIRECT_COUNT, &hop);
        if (hop == guard->sentHop_) {
            return CURL_PREREQFUNC_ABORT;
        }
        guard->sentHop_ = hop;
        return CURL_PREREQFUNC_OK;
    }

    CURL* handle_;
    long sentHop_ = -1;  // the redirect count at the last send; -1 before the first
};

}  // namespace

bool CaseInsensitiveLess::operator()(const std::string& left, const std::string& right) const {
    const size_t length = std::min(left.size(), right.size());
    for (size_t i = 0; i < length; ++i) {
        const char a = lowerAscii(left[i]);
        const char b = lowerAscii(right[i]);
        if (a != b) {
            return a < b;
        }
    }
    return left.size() < right.size();
}

CurlSession::CurlSession() {
    ensureCurlGlobalInit();
    handle_ = curl_easy_init();
    multi_ = curl_multi_init();
}

CurlSession::~CurlSession() {
    release();
}

CurlSession::CurlSession(CurlSession&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)),
      multi_(std::exchange(other.multi_, nullptr)),
      aborted_(other.aborted_.load()),
      headerList_(std::exchange(other.headerList_, nullptr)),
      url_(std::move(other.url_)),
      query_(std::move(other.query_)),
      body_(std::move(other.body_)),
      headers_(std::move(other.headers_)),
      timeoutMs_(other.timeoutMs_),
      proxy_(std::move(other.proxy_)),
      caFile_(std::move(other.caFile_)) {}

CurlSession& CurlSession::operator=(CurlSession&& other) noexcept {
    if (this != &other) {
        release();
        handle_ = std::exchange(other.handle_, nullptr);
        multi_ = std::exchange(other.multi_, nullptr);
        aborted_ = other.aborted_.load();
        headerList_ = std::exchange(other.headerList_, nullptr);
        url_ = std::move(other.url_);
        query_ = std::move(other.query_);
        body_ = std::move(other.body_);
        headers_ = std::move(other.headers_);
        timeoutMs_ = other.timeoutMs_;
        proxy_ = std::move(other.proxy_);
        caFile_ = std::move(other.caFile_);
    }
    return *this;
}

void CurlSession::release() {
    if (headerList_ != nullptr) {
        curl_slist_free_all(headerList_);
        headerList_ = nullptr;
    }
    if (handle_ != nullptr) {
        curl_easy_cleanup(handle_);
        handle_ = nullptr;
    }
    if (multi_ != nullptr) {
        curl_multi_cleanup(multi_);
        multi_ = nullptr;
    }
}

void CurlSession::abort() {
    aborted_.store(true);
    if (multi_ != nullptr) {
        curl_multi_wakeup(multi_);
    }
}

CURLcode CurlSession::performAbortable() {
    if (multi_ == nullptr || curl_multi_add_handle(multi_, handle_) != CURLM_OK) {
        return CURLE_FAILED_INIT;
    }
    // abort() wakes the poll at once; the owner of the thread can only be seen by looking.
    const OperationAbort operation;
    const int pollMs = operation.watched() ? 20 : 1000;
    CURLcode result = CURLE_FAILED_INIT;
    for (;;) {
        if (aborted_.load() || operation.requested()) {
            result = CURLE_ABORTED_BY_CALLBACK;
            break;
        }
        int active = 0;
        if (curl_multi_perform(multi_, &active) != CURLM_OK) {
            break;
        }
        bool finished = false;
        int left = 0;
        while (CURLMsg* message = curl_multi_info_read(multi_, &left)) {
            if (message->msg == CURLMSG_DONE && message->easy_handle == handle_) {
                result = message->data.result;
                finished = true;
            }
        }
        if (finished || active == 0 ||
            curl_multi_poll(multi_, nullptr, 0, pollMs, nullptr) != CURLM_OK) {
            break;
        }
    }
    curl_multi_remove_handle(multi_, handle_);
    return result;
}

void CurlSession::setUrl(std::string url) {
    url_ = std::move(url);
}
void CurlSession::setQuery(std::string encodedQuery) {
    query_ = std::move(encodedQuery);
}
void CurlSession::setBody(std::string body) {
    body_ = std::move(body);
}
void CurlSession::setHeaders(HeaderMap headers) {
    headers_ = std::move(headers);
}
void CurlSession::setTimeoutMs(long timeoutMs) {
    timeoutMs_ = timeoutMs;
}
void CurlSession::setProxy(std::string proxy) {
    proxy_ = std::move(proxy);
}
void CurlSession::setCaFile(std::string caFile) {
    caFile_ = std::move(caFile);
}

std::string CurlSession::fullUrl() const {
    return query_.empty() ? url_ : url_ + "?" + query_;
}

CurlResponse CurlSession::get() {
    return perform(false);
}
CurlResponse CurlSession::post() {
    return perform(true);
}

CurlResponse CurlSession::perform(bool isPost) {
    CurlResponse response;
    if (handle_ == nullptr) {
        response.errorCode = CprErrorCode::INTERNAL_ERROR;
        response.errorMessage = curl_easy_strerror(CURLE_FAILED_INIT);
        return response;
    }
    // Reset drops the previous request's options but keeps live connections and caches.
    curl_easy_reset(handle_);
    if (headerList_ != nullptr) {
        curl_slist_free_all(headerList_);
        headerList_ = nullptr;
    }

    const std::string url = fullUrl();
    if (!hasExplicitScheme(url)) {
        response.errorCode = CprErrorCode::INVALID_URL_FORMAT;
        response.errorMessage = curl_easy_strerror(CURLE_URL_MALFORMAT);
        return response;
    }

    std::array<char, CURL_ERROR_SIZE> errorBuffer{};
    const std::string agent = curlVersionAgent();
    curl_easy_setopt(handle_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_, CURLOPT_ERRORBUFFER, errorBuffer.data());
    curl_easy_setopt(handle_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle_, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(handle_, CURLOPT_USERAGENT, agent.c_str());
    // Redirects are followed, as callers of this client have always had them.
    curl_easy_setopt(handle_, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle_, CURLOPT_MAXREDIRS, 50L);
    curl_easy_setopt(handle_, CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_ALL));
    curl_easy_setopt(handle_, CURLOPT_TIMEOUT_MS, timeoutMs_);
    if (!proxy_.empty()) {
        curl_easy_setopt(handle_, CURLOPT_PROXY, proxy_.c_str());
        // Proxies may hang up on a client right after an answer without announcing it; a POST
        // on such a connection would fail, since it is never sent twice, so it gets its own.
        if (isPost) {
            curl_easy_setopt(handle_, CURLOPT_FRESH_CONNECT, 1L);
        }
    }
    if (!caFile_.empty()) {
        // CURLOPT_CAPATH keeps its compiled-in default, so the system's authorities stay.
        curl_easy_setopt(handle_, CURLOPT_CAINFO, caFile_.c_str());
    }
    for (const auto& [name, value] : headers_) {
        // "Name;" is libcurl's way to send a header whose value is empty.
        const std::string line = value.empty() ? name + ";" : name + ": " + value;
        headerList_ = curl_slist_append(headerList_, line.c_str());
    }
    curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, headerList_);
    if (isPost) {
        curl_easy_setopt(handle_, CURLOPT_POST, 1L);
        curl_easy_setopt(handle_, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(body_.size()));
        curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, body_.c_str());
    } else {
        curl_easy_setopt(handle_, CURLOPT_HTTPGET, 1L);
    }
    ReplySink sink{&response.body};
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, appendToBody);
    curl_easy_setopt(handle_, CURLOPT_WRITEDATA, &sink);

    // GETs change nothing on the server and keep libcurl's resend.
    std::optional<SingleSendGuard> singleSend;
    if (isPost) {
        singleSend.emplace(handle_);
    }
    const CURLcode result = performAbortable();

    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &response.statusCode);
    curl_easy_getinfo(handle_, CURLINFO_NUM_CONNECTS, &response.newConnections);
    char* effectiveUrl = nullptr;
    curl_easy_getinfo(handle_, CURLINFO_EFFECTIVE_URL, &effectiveUrl);
    if (effectiveUrl != nullptr) {
        response.effectiveUrl = effectiveUrl;
    }
    response.errorCode = cprErrorFromCurl(result);
    if (sink.tooLarge) {
        response.body.clear();
        response.errorMessage =
            "reply larger than " + std::to_string(kMaxReplyBytes) + " bytes refused";
    } else if (result != CURLE_OK) {
        response.errorMessage =
            errorBuffer[0] != '\0' ? errorBuffer.data() : curl_easy_strerror(result);
    }
    // The buffer dies with this call; the handle must not keep pointing at it.
    curl_easy_setopt(handle_, CURLOPT_ERRORBUFFER, nullptr);
    return response;
}

}  // namespace tolvane::net
