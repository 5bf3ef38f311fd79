#pragma once

#include <QByteArray>
#include <QString>
#include <QWidget>

class FeedModel;
class QLabel;
class QListView;
class QTreeWidget;
class PanelService;

// The live room as it arrives over the barrage: the feed of chat and gifts, the online and
// member counts, and the rankings.
class RoomPanel : public QWidget {
    Q_OBJECT
public:
    explicit RoomPanel(PanelService& service, QWidget* parent = nullptr);

    FeedModel& feed() const { return *feed_; }
    int onlineCount() const { return online_; }
    int memberCount() const { return members_; }
    // The rankings shown, each with its entries.
    int rankingCount() const;

private slots:
    void onBarrage(const QString& type, const QByteArray& text);
    void onRoomStatus(int status);

private:
    void showRanking(const QString& type, const QString& list, const QString& brand);
    void showCounts();

    PanelService& service_;
    FeedModel* feed_;
    QListView* feedView_;
    QLabel* connection_;
    QLabel* counts_;
    QTreeWidget* rankings_;
    int online_ = -1;
    int members_ = -1;
    bool askedOnline_ = false;
    bool following_ = true;
};
