#include "room_panel.h"

#include <QGroupBox>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QScrollBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "barrage_text.h"
#include "feed_model.h"
#include "panel_service.h"

namespace {

// The room statuses the barrage connection reports.
QString connectionText(int status) {
    switch (status) {
        case 0:
            return QStringLiteral("barrage connected");
        case 211:
            return QStringLiteral("barrage: kicked out of the room");
        case 212:
            return QStringLiteral("barrage: reconnecting\u2026");
        case 213:
            return QStringLiteral("barrage: connection lost, reconnecting\u2026");
        case 230:
            return QStringLiteral("barrage: login rejected");
        default:
            return QStringLiteral("barrage: status %1").arg(status);
    }
}

QString rankingTitle(const QString& type) {
    static const QHash<QString, QString> titles = {
        {QStringLiteral("dayrk"), QStringLiteral("Today")},
        {QStringLiteral("weekrk"), QStringLiteral("This week")},
        {QStringLiteral("monthrk"), QStringLiteral("This month")},
        {QStringLiteral("totalrk"), QStringLiteral("All time")},
        {QStringLiteral("fansrk"), QStringLiteral("Fans")},
        {QStringLiteral("fansswrk"), QStringLiteral("Fans this week")},
        {QStringLiteral("dfansrk"), QStringLiteral("Diamond fans")},
        {QStringLiteral("olviplst"), QStringLiteral("VIPs online")},
    };
    return titles.value(type);
}

}  // namespace

RoomPanel::RoomPanel(PanelService& service, QWidget* parent)
    : QWidget(parent),
      service_(service),
      feed_(new FeedModel(this)),
      feedView_(new QListView),
      connection_(new QLabel(QStringLiteral("barrage: not connected"))),
      counts_(new QLabel),
      rankings_(new QTreeWidget) {
    feedView_->setModel(feed_);
    feedView_->setUniformItemSizes(true);
    feedView_->setSelectionMode(QAbstractItemView::NoSelection);
    // The feed follows the newest line until the user scrolls up, and again once back down.
    QScrollBar* bar = feedView_->verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int, int maximum) {
        if (following_) {
            bar->setValue(maximum);
        }
    });
    connect(bar, &QScrollBar::valueChanged, this,
            [this, bar](int value) { following_ = value >= bar->maximum(); });
    rankings_->setColumnCount(2);
    rankings_->setHeaderLabels({QStringLiteral("Ranking"), QStringLiteral("Score")});
    rankings_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    rankings_->header()->setStretchLastSection(false);
    rankings_->setRootIsDecorated(false);
    showCounts();

    auto* feedBox = new QGroupBox(QStringLiteral("Chat and gifts"));
    auto* feedLayout = new QVBoxLayout(feedBox);
    feedLayout->addWidget(feedView_);
    auto* rankingBox = new QGroupBox(QStringLiteral("Rankings"));
    auto* rankingLayout = new QVBoxLayout(rankingBox);
    rankingLayout->addWidget(rankings_);
    auto* layout = new QVBoxLayout(this);
    auto* header = new QHBoxLayout;
    header->addWidget(connection_);
    header->addStretch();
    header->addWidget(counts_);
    layout->addLayout(header);
    layout->addWidget(feedBox, 3);
    layout->addWidget(rankingBox, 2);

    connect(&service_, &PanelService::barrageMessage, this, &RoomPanel::onBarrage);
    connect(&service_, &PanelService::roomStatus, this, &RoomPanel::onRoomStatus);
    connect(&service_, &PanelService::ready, this,
            [this] { feed_->setCatalogue(service_.catalogue()); });
    connect(&service_, &PanelService::catalogueChanged, this, [this](int table) {
        const auto changed = static_cast<VxCatalogueTable>(table);
        if (changed == VxCatalogueTable::Gifts || changed == VxCatalogueTable::Props) {
            feed_->refreshNames();
        }
    });
}

void RoomPanel::onRoomStatus(int status) {
    connection_->setText(connectionText(status));
    // The first keep-alive is due a while after the login; asking now shows the count at once.
    if (status == 0 && !askedOnline_) {
        askedOnline_ = true;
        service_.call(
            this, [](ILiveencoderNetService& service) { service.barrageCall(); }, [] {});
    }
}

void RoomPanel::onBarrage(const QString& type, const QByteArray& text) {
    const BarrageItems items = readBarrageText(text);
    const auto value = [&items](const char* key) {
        return barrageValue(items, QLatin1String(key));
    };
    const QString sender =
        value("nn").isEmpty() ? QStringLiteral("user ") + value("uid") : value("nn");
    if (type == QLatin1String("chatmsg")) {
        feed_->addChat(sender, value("txt"));
    } else if (type == QLatin1String("gift")) {
        feed_->addItem(false, sender, value("gid").toInt(), value("gc").toInt());
    } else if (type == QLatin1String("prop")) {
        feed_->addItem(true, sender, value("pid").toInt(), value("pc").toInt());
    } else if (type == QLatin1String("keepalive")) {
        online_ = value("online").toInt();
        showCounts();
    } else if (type == QLatin1String("memberinfores")) {
        members_ = value("mc").toInt();
        showCounts();
    } else if (!rankingTitle(type).isEmpty()) {
        showRanking(type, value("list"), value("bn"));
    }
}

void RoomPanel::showCounts() {
    const auto shown = [](int count) {
        return count < 0 ? QStringLiteral("\u2014") : QString::number(count);
    };
    counts_->setText(QStringLiteral("online <b>%1</b> \u00b7 members <b>%2</b>")
                         .arg(shown(online_), shown(members_)));
}

void RoomPanel::showRanking(const QString& type, const QString& list, const QString& brand) {
    QTreeWidgetItem* top = nullptr;
    for (int i = 0; i < rankings_->topLevelItemCount(); ++i) {
        if (rankings_->topLevelItem(i)->data(0, Qt::UserRole).toString() == type) {
            top = rankings_->topLevelItem(i);
        }
    }
    if (top == nullptr) {
        top = new QTreeWidgetItem(rankings_);
        top->setData(0, Qt::UserRole, type);
        QFont bold = top->font(0);
        bold.setBold(true);
        top->setFont(0, bold);
        top->setExpanded(true);
    }
    top->setText(0, brand.isEmpty()
                        ? rankingTitle(type)
                        : QStringLiteral("%1 \u201c%2\u201d").arg(rankingTitle(type), brand));
    qDeleteAll(top->takeChildren());
    // Every item of the list is one entry, in ranking order, whatever its key.
    int place = 0;
    for (const auto& entry : readBarrageText(list.toUtf8())) {
        const BarrageItems fields = readBarrageText(entry.second.toUtf8());
        auto* row = new QTreeWidgetItem(top);
        row->setText(0, QStringLiteral("%1. %2").arg(++place).arg(
                            barrageValue(fields, QStringLiteral("nn"))));
        row->setText(1, barrageValue(fields, QStringLiteral("sc")));
        row->setTextAlignment(1, Qt::AlignRight);
    }
    top->setExpanded(true);
}

int RoomPanel::rankingCount() const {
    int shown = 0;
    for (int i = 0; i < rankings_->topLevelItemCount(); ++i) {
        shown += rankings_->topLevelItem(i)->childCount() > 0 ? 1 : 0;
    }
    return shown;
}
