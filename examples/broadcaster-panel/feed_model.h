#pragma once

#include <tolvane/i_vx_live_room_info.h>

#include <QAbstractListModel>
#include <QString>
#include <QVector>

// The live room's feed: chat lines and gifts, newest last. A gift is shown by its name from the
// catalogue; one the catalogue does not know yet shows by id until a table change names it.
class FeedModel : public QAbstractListModel {
    Q_OBJECT
public:
    static constexpr int kMaxLines = 300;

    explicit FeedModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

    void setCatalogue(IVxLiveRoomInfo* catalogue) { catalogue_ = catalogue; }
    void addChat(const QString& sender, const QString& text);
    void addItem(bool isProp, const QString& sender, int id, int count);
    // Names the items the catalogue has learned since they arrived.
    void refreshNames();

    int chatCount() const { return chats_; }
    int itemCount() const { return items_; }
    int unnamedCount() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Line {
        bool isItem = false;
        bool isProp = false;
        QString sender;
        QString text;  // the chat text, or the item's name (empty while unknown)
        int id = 0;
        int count = 0;
    };
    QString itemName(bool isProp, int id) const;
    void append(Line line);

    IVxLiveRoomInfo* catalogue_ = nullptr;
    QVector<Line> lines_;
    int chats_ = 0;
    int items_ = 0;
};
