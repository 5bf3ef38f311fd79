#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "http/sim_records.h"

namespace tolvane::sim {

// The services the simulator answers. Routes may be added while the server runs.
class SimRouteTable {
public:
    // A route with the same method and path replaces the earlier one.
    void add(SimRoute route);
    void remove(const std::string& method, const std::string& path);

    // An exact path wins over a "*" route; among "*" routes the longest prefix wins.
    std::optional<SimRoute> find(const std::string& method, const std::string& path) const;

    std::vector<SimRoute> routes() const;
    std::vector<SimRoute> routesOf(SimAddressTable table, int kind) const;

private:
    mutable std::mutex mutex_;
    std::vector<SimRoute> routes_;
};

}  // namespace tolvane::sim
