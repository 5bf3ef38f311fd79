#include "tolvane_config/operation_abort.h"

#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <QVariant>

#include "tolvane/operation_abort.h"

namespace tolvane::net {

OperationAbort::OperationAbort() {
    const QVariant flag = QThread::currentThread()->property(tolvane::kOperationAbortProperty);
    if (flag.isValid()) {
        flag_ = static_cast<const std::atomic<bool>*>(flag.value<void*>());
    }
}

void OperationAbort::quitOnRequest(QEventLoop& loop, QTimer& check) const {
    if (!watched()) {
        return;
    }
    QObject::connect(&check, &QTimer::timeout, &loop, [this, &loop] {
        if (requested()) {
            loop.quit();
        }
    });
    check.start(20);
}

}  // namespace tolvane::net
