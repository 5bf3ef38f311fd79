#pragma once

#include <QString>
#include <string>

#include "tolvane_config/default_data.h"

namespace tolvane::net {

constexpr int kBaseKindCount = 12;
constexpr int kHostKindCount = 8;
constexpr int kEnvironmentCount = 4;

// An index outside 0..3 selects production.
int clampEnvironment(int environment);

// Compiled-in base address (ends with "/"); empty for a kind outside 0..11 and for a service
// that the environment lacks.
QString compiledBaseAddress(int kind, int environment);

// Compiled-in scheme and host without a trailing "/"; empty for a host kind outside 0..7 and
// for a service that the environment lacks. Host kinds are numbered apart from base kinds.
QString compiledHost(int hostKind, int environment);

}  // namespace tolvane::net

// The two address tables with the overrides of default.data applied, so that a test or the
// demo can point every request at the simulator.
class VxEndpoints {
public:
    VxEndpoints() = default;
    explicit VxEndpoints(tolvane::config::EndpointOverrides overrides);

    // Reads default.data (or the file TOLVANE_DEFAULT_DATA names).
    static VxEndpoints fromDefaultData();

    QString baseAddress(int kind, int environment) const;
    std::string host(int hostKind, int environment) const;

    // Base address + path with nothing added in between; an empty cell gives the path alone.
    QString composeUrl(int kind, int environment, const QString& path) const;

    // The web site host and the room id as "host/id".
    std::string roomUrl(int environment, int roomId) const;

    const tolvane::config::EndpointOverrides& overrides() const { return overrides_; }

private:
    tolvane::config::EndpointOverrides overrides_;
};
