#include "http/sim_fault_table.h"

namespace tolvane::sim {

void SimFaultTable::set(const std::string& path, SimFault fault) {
    std::lock_guard<std::mutex> lock(mutex_);
    faults_[path] = std::move(fault);
}

void SimFaultTable::clear(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    faults_.erase(path);
}

void SimFaultTable::clearAll() {
    std::lock_guard<std::mutex> lock(mutex_);
    faults_.clear();
}

std::optional<SimFault> SimFaultTable::take(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = faults_.find(path);
    if (found == faults_.end()) {
        found = faults_.find(kAnyPath);
    }
    if (found == faults_.end()) {
        return std::nullopt;
    }
    SimFault fault = found->second;
    if (fault.once) {
        faults_.erase(found);
    }
    return fault;
}

}  // namespace tolvane::sim
