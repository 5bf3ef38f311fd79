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
    } else if (message->typeName == "gift" || message->typeName == "prop") {
        const bool isProp = message->typeName == "prop";
        const QString sender =
            item("nn").isEmpty() ? QStringLiteral("user ") + item("uid") : item("nn");
        const HeldGift gift{isProp, item(isProp ? "pid" : "gid").toInt(), sender,
                            item(isProp ? "pc" : "gc")};
        const QString name = itemName(isProp, gift.id);
        if (name.isEmpty()) {
            held_.push_back(gift);
        } else {
            printGift(gift, name, false);
        }
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

QString PrintingObserver::itemName(bool isProp, int32_t id) const {
    IVxLiveRoomInfo* catalogue = catalogue_.load();
    if (catalogue == nullptr) {
        return QString();
    }
    if (isProp) {
        VxPropRecord prop;
        return catalogue->findProp(id, prop) ? QString::fromStdString(prop.name) : QString();
    }
    VxGiftRecord gift;
    return catalogue->findGift(id, gift) ? QString::fromStdString(gift.name) : QString();
}

void PrintingObserver::printGift(const HeldGift& gift, const QString& name, bool late) {
    out_ << "  [gift] " << gift.sender << " sent " << gift.count << QStringLiteral(" \u00d7 ")
         << name;
    if (late) {
        out_ << " (named once the catalogue fetched it)";
    }
    out_ << Qt::endl;
}

void PrintingObserver::onTableChanged(VxCatalogueTable table) {
    if (table != VxCatalogueTable::Gifts && table != VxCatalogueTable::Props) {
        return;
    }
    QMutexLocker lock(&mutex_);
    for (auto it = held_.begin(); it != held_.end();) {
        const QString name = itemName(it->isProp, it->id);
        if (name.isEmpty()) {
            ++it;
            continue;
        }
        printGift(*it, name, true);
        if (!namedLater_.contains(name)) {
            namedLater_ << name;
        }
        it = held_.erase(it);
    }
}

void PrintingObserver::setCatalogue(IVxLiveRoomInfo* catalogue) {
    IVxLiveRoomInfo* previous = catalogue_.exchange(catalogue);
    if (previous != nullptr) {
        previous->removeObserver(this);
    }
    if (catalogue != nullptr) {
        catalogue->addObserver(this);
    }
}

void PrintingObserver::flushUnnamedGifts() {
    QMutexLocker lock(&mutex_);
    for (const HeldGift& gift : held_) {
        printGift(gift, QStringLiteral("%1 %2").arg(gift.isProp ? "prop" : "gift").arg(gift.id),
                  false);
    }
    held_.clear();
}

QStringList PrintingObserver::namedLater() {
    QMutexLocker lock(&mutex_);
    return namedLater_;
}
