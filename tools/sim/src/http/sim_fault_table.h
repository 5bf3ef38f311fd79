#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "http/sim_records.h"

namespace tolvane::sim {

// Faults by URL path, set from the test thread while server threads read them.
class SimFaultTable {
public:
    // The path "*" hits every request that has no fault of its own.
    static constexpr const char* kAnyPath = "*";

    void set(const std::string& path, SimFault fault);
    void clear(const std::string& path);
    void clearAll();

    // The fault for this request; a one-shot fault is removed as it is taken.
    std::optional<SimFault> take(const std::string& path);

private:
    std::mutex mutex_;
    std::map<std::string, SimFault> faults_;
};

}  // namespace tolvane::sim
