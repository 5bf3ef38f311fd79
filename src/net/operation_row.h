#pragma once

#include <vector>

namespace tolvane::net {

// The request client's table: a service's base address, path suffix included.
enum class BaseKind {
    Passport = 0,
    ContentRoot = 1,
    ContentV1 = 2,
    VideoPartner = 3,
    WebApi = 4,
    PcClient = 5,
    Mobile3 = 6,
    WebRoot = 7,
    WebConfig = 8,
    CustomerService = 9,
    Mobile2 = 10,
    Gift = 11,
};

// The service's table: scheme and host of a service, no path.
enum class HostKind {
    ContentApi = 0,
    WebSite = 1,
    Passport = 2,
    PcClient = 3,
    WebConfig = 4,
    Mobile3 = 5,
    CustomerService = 6,
    Mobile2 = 7,
};

// A multipart POST goes through the Qt client: its own items become text parts, files follow.
enum class HttpMethod { Get, Post, MultipartPost };

// Where "aid", "time" (and "client_sys" where sent) travel. Host-table rows put them in the
// query or leave them out; base-address rows may send them as headers instead.
enum class CommonPlacement { None, Query, Headers };

// What an operation logs when its parser refuses the reply.
enum class FailureLog {
    UrlAndReply,   // "error Url: %1" with the URL, then "result data : %1"
    PathAndReply,  // "error Url: %1" with the path, then "result data : %1"
    ReplyOnly,     // "result data : %1"
};

// One HTTP operation of the service, written the way the platform's tables write them. An
// operation's own code is its items and its parser; the runner does everything else.
struct OperationRow {
    const char* name = "";  // the banner's operation name, after "VxNetServiceImp::"
    HttpMethod method = HttpMethod::Post;
    bool onHostTable = true;
    int kind = 0;  // a BaseKind or a HostKind, as onHostTable says
    // Host rows: from "/". Base rows: after the base address, without a leading "/".
    const char* path = "";
    // Host rows: the name the signature covers; null sends no aid, time or auth at all. Base
    // rows are always signed over their path by their kind.
    const char* signingPath = nullptr;
    CommonPlacement common = CommonPlacement::Query;
    bool clientSys = false;        // "client_sys" = "pc" beside "aid"
    bool headerSignature = false;  // host rows: aid, time and auth repeated as headers
    int timeoutMs = 30000;
    const char* messageKey = "data";  // where a failed envelope keeps its message
    bool sessionExpiryHook = false;   // 220 and 221 refresh the profile
    FailureLog failureLog = FailureLog::UrlAndReply;
    bool logReplyWithoutAnswer = false;  // "result data : %1" also when nothing came back
    const char* fixedBanner = nullptr;   // written instead of the usual banner

    BaseKind baseKind() const { return static_cast<BaseKind>(kind); }
    HostKind hostKind() const { return static_cast<HostKind>(kind); }

    // A copy of the row with one field changed; the modifiers below name the fields.
    template <typename Field, typename Value>
    constexpr OperationRow with(Field OperationRow::*field, Value value) const {
        OperationRow row = *this;
        row.*field = value;
        return row;
    }
    constexpr OperationRow named(const char* operationName) const {
        return with(&OperationRow::name, operationName);
    }
    constexpr OperationRow commonIn(CommonPlacement placement) const {
        return with(&OperationRow::common, placement);
    }
    constexpr OperationRow withClientSys() const { return with(&OperationRow::clientSys, true); }
    constexpr OperationRow withHeaderSignature() const {
        return with(&OperationRow::headerSignature, true);
    }
    constexpr OperationRow timeout(int milliseconds) const {
        return with(&OperationRow::timeoutMs, milliseconds);
    }
    constexpr OperationRow messageIn(const char* key) const {
        return with(&OperationRow::messageKey, key);
    }
    constexpr OperationRow withExpiryHook() const {
        return with(&OperationRow::sessionExpiryHook, true);
    }
    constexpr OperationRow logging(FailureLog log) const {
        return with(&OperationRow::failureLog, log);
    }
    constexpr OperationRow withFixedBanner(const char* banner) const {
        return with(&OperationRow::fixedBanner, banner);
    }
    constexpr OperationRow loggingReplyWithoutAnswer() const {
        return with(&OperationRow::logReplyWithoutAnswer, true);
    }
};

// A row on the host table; a null signing path makes it unsigned.
constexpr OperationRow hostRow(const char* name, HttpMethod method, HostKind kind, const char* path,
                               const char* signingPath) {
    OperationRow row;
    row.name = name;
    row.method = method;
    row.onHostTable = true;
    row.kind = static_cast<int>(kind);
    row.path = path;
    row.signingPath = signingPath;
    row.common = signingPath != nullptr ? CommonPlacement::Query : CommonPlacement::None;
    return row;
}

// A row on the base-address table, signed over its path as its kind signs.
constexpr OperationRow baseRow(const char* name, HttpMethod method, BaseKind kind,
                               const char* path) {
    OperationRow row;
    row.name = name;
    row.method = method;
    row.onHostTable = false;
    row.kind = static_cast<int>(kind);
    row.path = path;
    return row;
}

// Every row the module defines registers itself here, so that one test can hold them all
// against the simulator's routes.
const OperationRow& registerOperation(const OperationRow& row);
std::vector<const OperationRow*> registeredOperations();

}  // namespace tolvane::net
