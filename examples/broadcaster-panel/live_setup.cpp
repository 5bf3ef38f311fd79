#include "live_setup.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <string>
#include <vector>

#include "category_picker.h"
#include "panel_service.h"

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

struct Line {
    std::string url;
    int32_t id = 0;
    bool h265 = false;
};

struct Lines {
    int32_t code = 0;
    std::vector<Line> lines;
};

struct LiveAnswer {
    int32_t code = 0;
    int32_t stateCode = 0;
    bool live = false;
};

// Reads the room's live state after a call that should have changed it.
void readLiveState(ILiveencoderNetService& service, LiveAnswer& answer) {
    bool showType = false;
    answer.stateCode = service.getRoomState(answer.live, showType);
}

}  // namespace

LiveSetup::LiveSetup(PanelService& service, QWidget* parent)
    : QWidget(parent),
      service_(service),
      picker_(new CategoryPicker(service)),
      lines_(new QListWidget),
      reloadLines_(new QPushButton(QStringLiteral("Reload"))),
      goLive_(new QPushButton(QStringLiteral("Go live"))),
      stop_(new QPushButton(QStringLiteral("Stop"))),
      liveBadge_(new QLabel) {
    lines_->setMinimumHeight(120);
    lines_->setMaximumHeight(140);
    lines_->setTextElideMode(Qt::ElideMiddle);
    lines_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    goLive_->setStyleSheet(QStringLiteral("QPushButton:enabled { font-weight: bold; }"));

    auto* categoryBox = new QGroupBox(QStringLiteral("Category"));
    auto* categoryLayout = new QVBoxLayout(categoryBox);
    categoryLayout->addWidget(picker_);

    auto* linesBox = new QGroupBox(QStringLiteral("Push lines"));
    auto* linesLayout = new QVBoxLayout(linesBox);
    linesLayout->addWidget(lines_);
    linesLayout->addWidget(reloadLines_, 0, Qt::AlignLeft);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(liveBadge_);
    buttons->addStretch();
    buttons->addWidget(goLive_);
    buttons->addWidget(stop_);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(categoryBox, 1);
    layout->addWidget(linesBox);
    layout->addLayout(buttons);

    connect(picker_, &CategoryPicker::failed, this, &LiveSetup::failed);
    // The platform may offer other lines for another category.
    connect(picker_, &CategoryPicker::categoryChanged, this, &LiveSetup::loadPushLines);
    connect(lines_, &QListWidget::itemSelectionChanged, this, &LiveSetup::refreshButtons);
    connect(reloadLines_, &QPushButton::clicked, this, &LiveSetup::loadPushLines);
    connect(goLive_, &QPushButton::clicked, this, &LiveSetup::openShow);
    connect(stop_, &QPushButton::clicked, this, &LiveSetup::closeShow);
    refreshButtons();
}

void LiveSetup::start() {
    started_ = true;
    picker_->load();
    loadPushLines();
    refreshLiveState();
}

void LiveSetup::loadPushLines() {
    linesPending_ = true;
    refreshButtons();
    service_.call(
        this,
        [](ILiveencoderNetService& service) {
            Lines answer;
            PushAddress* main = nullptr;
            PushAddress* h265 = nullptr;
            int32_t mainCount = 0, h265Count = 0;
            answer.code = service.get_all_rtmp_addresses(main, mainCount, h265, h265Count);
            for (int32_t i = 0; answer.code == 0 && main != nullptr && i < mainCount; ++i) {
                answer.lines.push_back({main[i].url, main[i].id, false});
            }
            for (int32_t i = 0; answer.code == 0 && h265 != nullptr && i < h265Count; ++i) {
                answer.lines.push_back({h265[i].url, h265[i].id, true});
            }
            // The arrays are the module's, handed over even with a refusal.
            service.freeArray(main);
            service.freeArray(h265);
            return answer;
        },
        [this](const Lines& answer) {
            linesPending_ = false;
            const QSignalBlocker quiet(lines_);
            lines_->clear();
            if (answer.code != 0) {
                emit failed(QStringLiteral("get_all_rtmp_addresses"), answer.code, QString());
            }
            for (const Line& line : answer.lines) {
                auto* item = new QListWidgetItem(
                    QStringLiteral("%1  line %2   %3")
                        .arg(line.h265 ? QStringLiteral("H.265") : QStringLiteral("main "))
                        .arg(line.id)
                        .arg(text(line.url)),
                    lines_);
                item->setData(kUrlRole, text(line.url));
            }
            if (lines_->count() > 0) {
                lines_->setCurrentRow(0);
            }
            refreshButtons();
        });
}

void LiveSetup::refreshLiveState() {
    livePending_ = true;
    refreshButtons();
    service_.call(
        this,
        [](ILiveencoderNetService& service) {
            LiveAnswer answer;
            readLiveState(service, answer);
            return answer;
        },
        [this](const LiveAnswer& answer) {
            onLiveAnswer(QString(), 0, answer.stateCode, answer.live);
        });
}

void LiveSetup::openShow() {
    const QListWidgetItem* line = lines_->currentItem();
    if (line == nullptr || livePending_) {
        return;
    }
    const std::string url = line->data(kUrlRole).toString().toStdString();
    livePending_ = true;
    refreshButtons();
    service_.call(
        this,
        [url](ILiveencoderNetService& service) {
            LiveAnswer answer;
            answer.code = service.open_live_room(url);
            readLiveState(service, answer);
            return answer;
        },
        [this](const LiveAnswer& answer) {
            onLiveAnswer(QStringLiteral("open_live_room"), answer.code, answer.stateCode,
                         answer.live);
        });
}

void LiveSetup::closeShow() {
    if (livePending_) {
        return;
    }
    livePending_ = true;
    refreshButtons();
    service_.call(
        this,
        [](ILiveencoderNetService& service) {
            LiveAnswer answer;
            answer.code = service.stop_live_room();
            readLiveState(service, answer);
            return answer;
        },
        [this](const LiveAnswer& answer) {
            onLiveAnswer(QStringLiteral("stop_live_room"), answer.code, answer.stateCode,
                         answer.live);
        });
}

void LiveSetup::onLiveAnswer(const QString& operation, int code, int stateCode, bool live) {
    livePending_ = false;
    if (code != 0) {
        emit failed(operation, code, QString());
    }
    if (stateCode != 0) {
        emit failed(QStringLiteral("getRoomState"), stateCode, QString());
    } else {
        stateKnown_ = true;
        setLive(live);
    }
    refreshButtons();
}

void LiveSetup::setLive(bool live) {
    const bool changed = live != live_;
    live_ = live;
    liveBadge_->setText(live ? QStringLiteral("<b style='color:#c00'>\u25cf LIVE</b>")
                             : QStringLiteral("offline"));
    if (changed) {
        emit liveChanged(live);
    }
}

void LiveSetup::refreshButtons() {
    reloadLines_->setEnabled(started_ && !linesPending_);
    goLive_->setEnabled(stateKnown_ && !live_ && !livePending_ && lines_->currentItem() != nullptr);
    stop_->setEnabled(stateKnown_ && live_ && !livePending_);
}
