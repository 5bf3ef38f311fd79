#include "net/endpoints.h"

#include <cstdio>
#include <utility>

namespace tolvane::net {

namespace {

// Columns: production, "live", "trunk" ("pre" for the gift service), "stress". An empty cell
// means the environment has no such service.
const char* const kBaseTable[kBaseKindCount][kEnvironmentCount] = {
    // 0 passport (login) service
    {"https://passport.tolvane.example/", "http://passport.live.tolvane.example/",
     "http://passport.trunk.tolvane.example/", "http://passport.stress.tolvane.example/"},
    // 1 content API, root
    {"https://api.tolvane.example/", "http://api.live.tolvane.example/",
     "http://api.trunk.tolvane.example/", "http://api.stress.tolvane.example/"},
    // 2 content API, version 1
    {"https://api.tolvane.example/api/v1/", "http://api.live.tolvane.example/api/v1/",
     "http://api.trunk.tolvane.example/api/v1/", "http://api.stress.tolvane.example/api/v1/"},
    // 3 content API, video partner
    {"https://api.tolvane.example/api/videoPartner/",
     "http://api.live.tolvane.example/api/videoPartner/",
     "http://api.trunk.tolvane.example/api/videoPartner/",
     "http://api.stress.tolvane.example/api/videoPartner/"},
    // 4 web site API
    {"https://www.tolvane.example/api/", "http://api.live.tolvane.example/api/",
     "http://api.trunk.tolvane.example/api/", "http://api.stress.tolvane.example/api/"},
    // 5 PC client API; production has always been served over plain http here
    {"http://pc.tolvane.example/", "http://pc.live.tolvane.example/",
     "http://pc.trunk.tolvane.example/", "http://pc.stress.tolvane.example/"},
    // 6 mobile API, version 3
    {"https://mapi.tolvane.example/", "http://mapi.live.tolvane.example/",
     "http://mapi.trunk.tolvane.example/", ""},
    // 7 web site, root
    {"https://www.tolvane.example/", "http://api.live.tolvane.example/",
     "http://api.trunk.tolvane.example/", "http://api.stress.tolvane.example/"},
    // 8 web configuration service
    {"https://webconf.tolvane.example/", "http://webconf.live.tolvane.example/",
     "http://webconf.trunk.tolvane.example/", "http://webconf.stress.tolvane.example/"},
    // 9 customer service
    {"https://support.tolvane.example/", "http://support.live.tolvane.example/",
     "http://support.trunk.tolvane.example/", ""},
    // 10 mobile API, version 2
    {"https://mapi2.tolvane.example/", "http://mapi2.live.tolvane.example/",
     "http://mapi2.trunk.tolvane.example/", ""},
    // 11 gift service
    {"https://gift.tolvane.example/", "http://gift.live.tolvane.example/",
     "http://gift.pre.tolvane.example/", ""},
};

const char* const kHostTable[kHostKindCount][kEnvironmentCount] = {
    // 0 content API host
    {"https://api.tolvane.example", "http://api.live.tolvane.example",
     "http://api.trunk.tolvane.example", "http://api.stress.tolvane.example"},
    // 1 web site host
    {"https://www.tolvane.example", "http://api.live.tolvane.example",
     "http://api.trunk.tolvane.example", "http://api.stress.tolvane.example"},
    // 2 passport host
    {"https://passport.tolvane.example", "http://passport.live.tolvane.example",
     "http://passport.trunk.tolvane.example", "http://passport.stress.tolvane.example"},
    // 3 PC client API host
    {"https://pc.tolvane.example", "http://pc.live.tolvane.example",
     "http://pc.trunk.tolvane.example", "http://pc.stress.tolvane.example"},
    // 4 web configuration host
    {"https://webconf.tolvane.example", "http://webconf.live.tolvane.example",
     "http://webconf.trunk.tolvane.example", "http://webconf.stress.tolvane.example"},
    // 5 mobile API version 3 host
    {"https://mapi.tolvane.example", "http://mapi.live.tolvane.example",
     "http://mapi.trunk.tolvane.example", ""},
    // 6 customer service host
    {"https://support.tolvane.example", "http://support.live.tolvane.example",
     "http://support.trunk.tolvane.example", ""},
    // 7 mobile API version 2 host; the trunk server only answers over https
    {"https://mapi2.tolvane.example", "http://mapi2.live.tolvane.example",
     "https://mapi2.trunk.tolvane.example", ""},
};

}  // namespace

int clampEnvironment(int environment) {
    return (environment < 0 || environment >= kEnvironmentCount) ? 0 : environment;
}

QString compiledBaseAddress(int kind, int environment) {
    if (kind < 0 || kind >= kBaseKindCount) {
        return QString();
    }
    return QString::fromLatin1(kBaseTable[kind][clampEnvironment(environment)]);
}

QString compiledHost(int hostKind, int environment) {
    if (hostKind < 0 || hostKind >= kHostKindCount) {
        return QString();
    }
    return QString::fromLatin1(kHostTable[hostKind][clampEnvironment(environment)]);
}

}  // namespace tolvane::net

VxEndpoints::VxEndpoints(tolvane::config::EndpointOverrides overrides)
    : overrides_(std::move(overrides)) {}

VxEndpoints VxEndpoints::fromDefaultData() {
    return VxEndpoints(tolvane::config::readDefaultData().endpoints);
}

QString VxEndpoints::baseAddress(int kind, int environment) const {
    if (kind < 0 || kind >= tolvane::net::kBaseKindCount) {
        return QString();
    }
    return tolvane::config::applyBaseOverride(overrides_, kind,
                                              tolvane::net::compiledBaseAddress(kind, environment));
}

std::string VxEndpoints::host(int hostKind, int environment) const {
    if (hostKind < 0 || hostKind >= tolvane::net::kHostKindCount) {
        return std::string();
    }
    return tolvane::config::applyHostOverride(overrides_, hostKind,
                                              tolvane::net::compiledHost(hostKind, environment))
        .toStdString();
}

QString VxEndpoints::composeUrl(int kind, int environment, const QString& path) const {
    return baseAddress(kind, environment) + path;
}

std::string VxEndpoints::roomUrl(int environment, int roomId) const {
    // The room address has always been formatted into a fixed buffer; longer text is cut.
    char buffer[1024] = {};
    std::snprintf(buffer, sizeof(buffer), "%s/%d", host(1, environment).c_str(), roomId);
    return std::string(buffer);
}
