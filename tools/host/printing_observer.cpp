#include "printing_observer.h"

#include <QMutexLocker>

#include "vxencoder/vx_decoder.h"

void PrintingObserver::onRoomStatus(int32_t status) {
    lastStatus_ = status;
    QMutexLocker lock(&mutex_);
    out_ << "  [room] status " << status << Qt::endl;
}

void PrintingObserver::onText(const std::string& text) {
    QMutexLocker lock(&mutex_);
    out_ << "  [room] text " << QString::fromStdString(text) << Qt::endl;
}

void PrintingObserver::onShowEnd(int32_t reason, float banHours) {
    ++showEnds_;
    QMutexLocker lock(&mutex_);
    out_ << "  [room] show ended, reason " << reason << ", ban hours " << banHours << Qt::endl;
}

void PrintingObserver::onBarrageMessage(const BarrageMessage* message) {
    ++messages_;
    if (message == nullptr) {
        return;
    }
    // The host reads the message's items with the platform's decoder, as a real host would.
    vxDecoder items;
    items.Parse(message->rawText);
    auto item = [&items](const char* key) { return QString::fromStdString(items.GetText(key)); };
    QMutexLocker lock(&mutex_);
    if (message->typeName == "chatmsg") {
        out_ << "  [chat] " << item("nn") << ": " << item("txt") << Qt::endl;
    } else if (message->typeName == "gift") {
        out_ << "  [gift] user " << item("uid") << " sent gift " << item("gid") << " x"
             << item("gc") << Qt::endl;
    } else {
        ++counted_[message->typeName];
    }
}

QString PrintingObserver::summary() {
    QMutexLocker lock(&mutex_);
    QStringList parts;
    for (const auto& [type, count] : counted_) {
        parts << QStringLiteral("%1 %2").arg(QString::fromStdString(type)).arg(count);
    }
    return parts.join(QStringLiteral(", "));
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
