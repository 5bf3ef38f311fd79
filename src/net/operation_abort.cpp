#include "net/operation_abort.h"

#include <QThread>
#include <QVariant>

#include "tolvane/operation_abort.h"

namespace tolvane::net {

OperationAbort::OperationAbort() {
    const QVariant flag = QThread::currentThread()->property(tolvane::kOperationAbortProperty);
    if (flag.isValid()) {
        flag_ = static_cast<const std::atomic<bool>*>(flag.value<void*>());
    }
}

}  // namespace tolvane::net
