#include "http/sim_signature.h"

#include <strings.h>
#include <QString>
#include <algorithm>
#include <set>

#include "halyard/auth_code.h"

namespace tolvane::sim {

namespace {

const char kAid[] = "vxtool";

struct CaseLess {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};

// Headers that the HTTP stacks add on their own, plus the ones the client never signs.
const std::set<std::string, CaseLess>& unsignedHeaders() {
    static const std::set<std::string, CaseLess> names = {
        "Host",
        "Accept",
        "Accept-Encoding",
        "Accept-Language",
        "User-Agent",
        "Content-Type",
        "Content-Length",
        "Connection",
        "Expect",
        "Transfer-Encoding",
        "Keep-Alive",
        "Proxy-Connection",
        "TE",
        "Upgrade",
        "User-Device",
        "auth",
        "REMOTE_ADDR",
        "REMOTE_PORT",
        "LOCAL_ADDR",
        "LOCAL_PORT",
    };
    return names;
}

SimPairs without(const SimPairs& pairs, std::initializer_list<const char*> keys) {
    SimPairs kept;
    for (const auto& pair : pairs) {
        const bool dropped = std::any_of(keys.begin(), keys.end(),
                                         [&](const char* key) { return pair.first == key; });
        if (!dropped) {
            kept.push_back(pair);
        }
    }
    return kept;
}

std::string composeSignatureText(const std::string& path, const std::string& query,
                                 const std::string& extra) {
    std::string text = path + "?" + query + "%s";
    if (!extra.empty()) {
        text += "&" + extra;
    }
    return text;
}

// Mobile kinds sign a fixed aid and time first, then the query without them.
SimSignature mobileSignature(const std::string& path, const SimRequest& request,
                             const std::string& aid, const std::string& time, int environment) {
    SimPairs list = {{"aid", aid}, {"time", time}};
    for (const auto& pair : without(request.query, {"aid", "time"})) {
        list.push_back(pair);
    }
    SimSignature signature;
    signature.text = composeSignatureText(path, sortedQueryText(list),
                                          sortedQueryText(without(request.form, {"auth"})));
    signature.received = request.header("auth");
    signature.live = environment != 0;
    return signature;
}

}  // namespace

std::string sortedQueryText(SimPairs pairs) {
    std::stable_sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) {
        const int byKey = QString::fromStdString(a.first).compare(QString::fromStdString(b.first));
        if (byKey != 0) {
            return byKey < 0;
        }
        return QString::fromStdString(a.second) < QString::fromStdString(b.second);
    });
    std::string text;
    for (const auto& pair : pairs) {
        if (!text.empty()) {
            text += '&';
        }
        text += pair.first + "=" + pair.second;
    }
    return text;
}

SimPairs signedHeaderGroup(const SimPairs& headers) {
    SimPairs group;
    for (const auto& pair : headers) {
        if (unsignedHeaders().count(pair.first) == 0) {
            group.push_back(pair);
        }
    }
    return group;
}

SimSignature expectedSignature(SimSignRule rule, const std::string& signingPath,
                               const SimRequest& request, int environment) {
    SimSignature signature;
    const std::string formText = sortedQueryText(without(request.form, {"auth"}));
    switch (rule) {
        case SimSignRule::None:
            break;
        case SimSignRule::Query: {
            // The client signs the query when it has one, otherwise its header group.
            const SimPairs query = without(request.query, {"auth"});
            if (!query.empty()) {
                signature.text =
                    composeSignatureText(signingPath, sortedQueryText(query), formText);
                signature.received = request.queryValue("auth");
            } else {
                signature.text = composeSignatureText(
                    signingPath, sortedQueryText(signedHeaderGroup(request.headers)), formText);
                signature.received = request.header("auth");
            }
            break;
        }
        case SimSignRule::Mobile3:
            signature = mobileSignature(signingPath, request, kAid,
                                        headerValue(request.headers, "time", "0"), environment);
            break;
        case SimSignRule::Mobile2:
            signature = mobileSignature(signingPath, request, request.header("aid"),
                                        request.header("time"), environment);
            break;
        case SimSignRule::CommonLists: {
            const std::string time = hasPair(request.query, "time") ? request.queryValue("time")
                                                                    : request.formValue("time");
            SimPairs first = without(request.query, {"aid", "time", "auth"});
            first.emplace_back("aid", kAid);
            first.emplace_back("time", time);
            signature.text = composeSignatureText(signingPath, sortedQueryText(first), formText);
            if (hasPair(request.query, "auth")) {
                signature.received = request.queryValue("auth");
            } else if (hasPair(request.form, "auth")) {
                signature.received = request.formValue("auth");
            } else {
                signature.received = request.header("auth");
            }
            break;
        }
    }
    return signature;
}

std::string signText(const std::string& text, bool live) {
    char* code = live ? GenerateAuthCodeLive(text.c_str()) : GenerateAuthCode(text.c_str());
    if (code == nullptr) {
        return std::string();
    }
    std::string result(code);
    FreeAuthCode(code);
    return result;
}

bool verifySignature(SimSignRule rule, const std::string& signingPath, SimRequest& request,
                     int environment) {
    if (rule == SimSignRule::None) {
        return true;
    }
    const SimSignature signature = expectedSignature(rule, signingPath, request, environment);
    request.signingText = signature.text;
    const std::string expected = signText(signature.text, signature.live);
    return !expected.empty() && expected == signature.received;
}

}  // namespace tolvane::sim
