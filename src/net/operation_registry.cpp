#include <deque>
#include <mutex>

#include "net/operation_row.h"

namespace tolvane::net {

namespace {

struct Registry {
    std::mutex mutex;
    std::deque<OperationRow> rows;  // a deque keeps the references handed out valid
};

Registry& registry() {
    static Registry instance;
    return instance;
}

}  // namespace

const OperationRow& registerOperation(const OperationRow& row) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.rows.push_back(row);
    return r.rows.back();
}

std::vector<const OperationRow*> registeredOperations() {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    std::vector<const OperationRow*> rows;
    for (const OperationRow& row : r.rows) {
        rows.push_back(&row);
    }
    return rows;
}

}  // namespace tolvane::net
