#include "feed_model.h"

#include <algorithm>

#include <QBrush>
#include <QColor>

void FeedModel::addChat(const QString& sender, const QString& text) {
    ++chats_;
    Line line;
    line.sender = sender;
    line.text = text;
    append(std::move(line));
}

void FeedModel::addItem(bool isProp, const QString& sender, int id, int count) {
    ++items_;
    Line line;
    line.isItem = true;
    line.isProp = isProp;
    line.sender = sender;
    line.id = id;
    line.count = count;
    line.text = itemName(isProp, id);
    append(std::move(line));
}

void FeedModel::append(Line line) {
    if (lines_.size() >= kMaxLines) {
        beginRemoveRows(QModelIndex(), 0, 0);
        lines_.removeFirst();
        endRemoveRows();
    }
    beginInsertRows(QModelIndex(), lines_.size(), lines_.size());
    lines_.append(std::move(line));
    endInsertRows();
}

void FeedModel::refreshNames() {
    for (int row = 0; row < lines_.size(); ++row) {
        Line& line = lines_[row];
        if (line.isItem && line.text.isEmpty()) {
            line.text = itemName(line.isProp, line.id);
            if (!line.text.isEmpty()) {
                emit dataChanged(index(row), index(row));
            }
        }
    }
}

int FeedModel::unnamedCount() const {
    return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [](const Line& line) {
        return line.isItem && line.text.isEmpty();
    }));
}

QString FeedModel::itemName(bool isProp, int id) const {
    if (catalogue_ == nullptr) {
        return QString();
    }
    if (isProp) {
        VxPropRecord prop;
        return catalogue_->findProp(id, prop) ? QString::fromStdString(prop.name) : QString();
    }
    VxGiftRecord gift;
    return catalogue_->findGift(id, gift) ? QString::fromStdString(gift.name) : QString();
}

int FeedModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : lines_.size();
}

QVariant FeedModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= lines_.size()) {
        return QVariant();
    }
    const Line& line = lines_[index.row()];
    if (role == Qt::ForegroundRole && line.isItem) {
        return QBrush(QColor(0xa0, 0x4a, 0x00));
    }
    if (role != Qt::DisplayRole) {
        return QVariant();
    }
    if (!line.isItem) {
        return QStringLiteral("%1: %2").arg(line.sender, line.text);
    }
    const QString name = line.text.isEmpty() ? QStringLiteral("%1 #%2 (name loading)")
                                                   .arg(line.isProp ? QStringLiteral("prop")
                                                                    : QStringLiteral("gift"))
                                                   .arg(line.id)
                                             : line.text;
    return QStringLiteral("%1 sent %2 \u00d7 %3").arg(line.sender).arg(line.count).arg(name);
}
