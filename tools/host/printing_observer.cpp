#include "printing_observer.h"

#include <QMutexLocker>

void PrintingObserver::onRoomStatus(int32_t status) {
    QMutexLocker lock(&mutex_);
    out_ << "  [room] status " << status << Qt::endl;
}

void PrintingObserver::onText(const std::string& text) {
    QMutexLocker lock(&mutex_);
    out_ << "  [room] text " << QString::fromStdString(text) << Qt::endl;
}

void PrintingObserver::onShowEnd(int32_t reason, float banHours) {
    QMutexLocker lock(&mutex_);
    out_ << "  [room] show ended, reason " << reason << ", ban hours " << banHours << Qt::endl;
}

void PrintingObserver::onBarrageMessage(const BarrageMessage* message) {
    ++messages_;
    if (message == nullptr) {
        return;
    }
    QMutexLocker lock(&mutex_);
    out_ << "  [barrage] " << QString::fromStdString(message->typeName) << ": "
         << QString::fromStdString(message->rawText).left(120) << Qt::endl;
}

void PrintingObserver::onBreadcrumb(const VxBreadcrumb<VxBreadcrumb_Http>& crumb) {
    ++breadcrumbs_;
    if (!verboseBreadcrumbs_) {
        return;
    }
    QMutexLocker lock(&mutex_);
    out_ << "  [http] " << QString::fromStdString(crumb.part.method) << ' '
         << QString::fromStdString(crumb.part.url) << " -> " << crumb.part.statusCode << Qt::endl;
}
