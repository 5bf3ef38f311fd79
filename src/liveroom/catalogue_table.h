#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

namespace tolvane::liveroom {

// One table of the catalogue: records by 32-bit id behind the table's own lock. Every read
// hands out a copy, so no caller ever holds a reference into the locked map.
template <typename Record>
class CatalogueTable {
public:
    bool find(int32_t id, Record& out) const {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto found = records_.find(id);
        if (found == records_.end()) {
            return false;
        }
        out = found->second;
        return true;
    }

    bool contains(int32_t id) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return records_.count(id) != 0;
    }

    std::vector<Record> all() const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<Record> out;
        out.reserve(records_.size());
        for (const auto& entry : records_) {
            out.push_back(entry.second);
        }
        return out;
    }

    std::size_t size() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return records_.size();
    }

    // The whole table at once, so a reader sees the old table or the new one, never a mix.
    void replace(const std::vector<Record>& records) {
        std::map<int32_t, Record> fresh;
        for (const Record& record : records) {
            fresh[record.id] = record;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        records_.swap(fresh);
    }

    void insert(const Record& record) {
        std::lock_guard<std::mutex> lock(mutex_);
        records_[record.id] = record;
    }

    // True when there was anything to clear.
    bool clear() {
        std::map<int32_t, Record> old;
        std::lock_guard<std::mutex> lock(mutex_);
        old.swap(records_);
        return !old.empty();
    }

private:
    mutable std::mutex mutex_;
    std::map<int32_t, Record> records_;
};

}  // namespace tolvane::liveroom
