#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tolvane::sim {

// Ordered (key, value) pairs as they arrived; keys may repeat.
using SimPairs = std::vector<std::pair<std::string, std::string>>;

// First value under the key, or the fallback; header lookups ignore case.
std::string pairValue(const SimPairs& pairs, const std::string& key,
                      const std::string& fallback = std::string());
std::string headerValue(const SimPairs& headers, const std::string& key,
                        const std::string& fallback = std::string());
bool hasPair(const SimPairs& pairs, const std::string& key);

// How a route checks the "auth" value the client computed.
enum class SimSignRule {
    None,         // no signature
    Query,        // base-address kinds 0-5 and 7: over the query, or the headers without one
    Mobile3,      // kind 6: aid "vxtool", time from the headers, auth in the headers
    Mobile2,      // kind 10: as Mobile3, but aid from the headers too
    CommonLists,  // own-URL operations: query plus aid and time, then the form
};

// Which of the client's two address tables a route belongs to (documentation and lookup).
enum class SimAddressTable { None, Base, Host };

// A file part of a multipart body.
struct SimUpload {
    std::string name;
    std::string fileName;
    std::string contentType;
    std::string content;
};

// One request as the server saw it; the request log keeps these.
struct SimRequest {
    std::string scheme;  // "http" or "https"
    std::string method;
    std::string path;      // decoded URL path, without the query
    SimPairs query;        // decoded, in arrival order
    std::string rawQuery;  // as sent, still percent-encoded, without the "?"
    SimPairs headers;      // names as sent
    SimPairs form;         // decoded url-encoded items, or the text parts of a multipart body
    std::vector<SimUpload> uploads;  // the file parts of a multipart body, by name
    std::string body;
    bool routed = false;       // a route matched
    bool authChecked = false;  // the route has a signing rule
    bool authOk = false;       // true also when nothing needed checking
    std::string signingText;   // what the server signed to compare; empty when unsigned

    std::string queryValue(const std::string& key) const { return pairValue(query, key); }
    std::string formValue(const std::string& key) const { return pairValue(form, key); }
    std::string header(const std::string& key) const { return headerValue(headers, key); }
    // The query value, else the form value.
    std::string param(const std::string& key) const;
};

struct SimReply {
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
};

using SimHandler = std::function<SimReply(const SimRequest&)>;

struct SimRoute {
    std::string method;  // "GET", "POST"; empty matches any method
    SimAddressTable table = SimAddressTable::None;
    int kind = -1;            // base-address kind or host kind
    std::string path;         // URL path; a trailing "*" matches any rest
    std::string signingPath;  // the path the client signs, e.g. "api/v1/bindphone2"
    SimSignRule rule = SimSignRule::None;
    SimHandler handler;
};

// A misbehaviour the server shows for one path instead of its normal reply.
struct SimFault {
    enum class Kind {
        None,              // only the delay
        Status,            // answer `status` with `body`
        Malformed,         // 200 with an HTML page instead of JSON
        LargeBody,         // 200 with exactly `size` bytes of valid JSON
        DropConnection,    // headers and part of the body, then the socket closes
        CloseBeforeReply,  // the request is read, then the socket closes without a reply byte
        Trickle,           // 200 with `body`, one byte every `intervalMs`
        TruncatedChunks,   // 200, chunked: the first half of `body`, then the socket closes
    };
    Kind kind = Kind::None;
    int delayMs = 0;
    int status = 500;
    std::string body;
    std::size_t size = 0;
    int intervalMs = 1000;
    bool once = false;  // removed after the first request it hits

    static SimFault delay(int ms);
    static SimFault httpStatus(int status, std::string body = std::string());
    static SimFault malformed();
    static SimFault largeBody(std::size_t bytes);
    static SimFault dropConnection();
    static SimFault closeBeforeReply();
    static SimFault trickle(std::string body, int intervalMs = 1000);
    static SimFault truncatedChunks(std::string body);
    SimFault& oneShot() {
        once = true;
        return *this;
    }
    SimFault& withDelay(int ms) {
        delayMs = ms;
        return *this;
    }
};

}  // namespace tolvane::sim
