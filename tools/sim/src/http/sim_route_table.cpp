#include "http/sim_route_table.h"

#include <algorithm>

namespace tolvane::sim {

namespace {

bool isPrefixRoute(const SimRoute& route) {
    return !route.path.empty() && route.path.back() == '*';
}

bool methodMatches(const SimRoute& route, const std::string& method) {
    return route.method.empty() || route.method == method;
}

}  // namespace

void SimRouteTable::add(SimRoute route) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto same = std::find_if(routes_.begin(), routes_.end(), [&](const SimRoute& existing) {
        return existing.method == route.method && existing.path == route.path;
    });
    if (same != routes_.end()) {
        *same = std::move(route);
    } else {
        routes_.push_back(std::move(route));
    }
}

void SimRouteTable::remove(const std::string& method, const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    routes_.erase(std::remove_if(routes_.begin(), routes_.end(),
                                 [&](const SimRoute& route) {
                                     return route.method == method && route.path == path;
                                 }),
                  routes_.end());
}

std::optional<SimRoute> SimRouteTable::find(const std::string& method,
                                            const std::string& path) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const SimRoute* best = nullptr;
    for (const SimRoute& route : routes_) {
        if (!methodMatches(route, method)) {
            continue;
        }
        if (!isPrefixRoute(route)) {
            if (route.path == path) {
                return route;
            }
            continue;
        }
        const std::size_t prefixLength = route.path.size() - 1;
        if (path.compare(0, prefixLength, route.path, 0, prefixLength) == 0 &&
            (best == nullptr || prefixLength > best->path.size() - 1)) {
            best = &route;
        }
    }
    if (best == nullptr) {
        return std::nullopt;
    }
    return *best;
}

std::vector<SimRoute> SimRouteTable::routes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return routes_;
}

std::vector<SimRoute> SimRouteTable::routesOf(SimAddressTable table, int kind) const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<SimRoute> found;
    std::copy_if(routes_.begin(), routes_.end(), std::back_inserter(found),
                 [&](const SimRoute& route) { return route.table == table && route.kind == kind; });
    return found;
}

}  // namespace tolvane::sim
