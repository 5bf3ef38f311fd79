#include "http/sim_records.h"

#include <strings.h>

namespace tolvane::sim {

std::string pairValue(const SimPairs& pairs, const std::string& key, const std::string& fallback) {
    for (const auto& pair : pairs) {
        if (pair.first == key) {
            return pair.second;
        }
    }
    return fallback;
}

std::string headerValue(const SimPairs& headers, const std::string& key,
                        const std::string& fallback) {
    for (const auto& pair : headers) {
        if (strcasecmp(pair.first.c_str(), key.c_str()) == 0) {
            return pair.second;
        }
    }
    return fallback;
}

bool hasPair(const SimPairs& pairs, const std::string& key) {
    for (const auto& pair : pairs) {
        if (pair.first == key) {
            return true;
        }
    }
    return false;
}

std::string SimRequest::param(const std::string& key) const {
    return hasPair(query, key) ? pairValue(query, key) : pairValue(form, key);
}

SimFault SimFault::delay(int ms) {
    SimFault fault;
    fault.delayMs = ms;
    return fault;
}

SimFault SimFault::httpStatus(int status, std::string body) {
    SimFault fault;
    fault.kind = Kind::Status;
    fault.status = status;
    fault.body = std::move(body);
    return fault;
}

SimFault SimFault::malformed() {
    SimFault fault;
    fault.kind = Kind::Malformed;
    return fault;
}

SimFault SimFault::largeBody(std::size_t bytes) {
    SimFault fault;
    fault.kind = Kind::LargeBody;
    fault.size = bytes;
    return fault;
}

SimFault SimFault::dropConnection() {
    SimFault fault;
    fault.kind = Kind::DropConnection;
    return fault;
}

SimFault SimFault::closeBeforeReply() {
    SimFault fault;
    fault.kind = Kind::CloseBeforeReply;
    return fault;
}

SimFault SimFault::trickle(std::string body, int intervalMs) {
    SimFault fault;
    fault.kind = Kind::Trickle;
    fault.body = std::move(body);
    fault.intervalMs = intervalMs;
    return fault;
}

SimFault SimFault::truncatedChunks(std::string body) {
    SimFault fault;
    fault.kind = Kind::TruncatedChunks;
    fault.body = std::move(body);
    return fault;
}

}  // namespace tolvane::sim
