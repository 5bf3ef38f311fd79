#include "panel_window.h"

#include <QCloseEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QVBoxLayout>
#include <string>

#include "category_picker.h"
#include "live_setup.h"
#include "login_page.h"
#include "panel_service.h"
#include "profile_strip.h"
#include "room_panel.h"
#include "status_line.h"

namespace {

struct Session {
    UserRecord user;
    int32_t barrage = 0;
    RoomSummary room;
    int32_t anchorLevel = 0;
};

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

}  // namespace

PanelWindow::PanelWindow(QWidget* parent)
    : QMainWindow(parent),
      service_(std::make_unique<PanelService>()),
      profile_(new ProfileStrip),
      pages_(new QStackedWidget),
      login_(new LoginPage(*service_)),
      setup_(new LiveSetup(*service_)),
      room_(new RoomPanel(*service_)),
      status_(new StatusLine) {
    setWindowTitle(QStringLiteral("Broadcaster panel"));
    auto* live = new QSplitter;
    live->addWidget(setup_);
    live->addWidget(room_);
    live->setSizes({460, 640});
    pages_->addWidget(login_);
    pages_->addWidget(live);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(profile_);
    layout->addWidget(pages_, 1);
    setCentralWidget(central);
    statusBar()->addWidget(status_, 1);
    resize(1100, 760);

    connect(login_, &LoginPage::failed, status_, &StatusLine::showFailure);
    connect(setup_, &LiveSetup::failed, status_, &StatusLine::showFailure);
    connect(&setup_->picker(), &CategoryPicker::info, status_, &StatusLine::showInfo);
    connect(&setup_->picker(), &CategoryPicker::categoryChanged, profile_,
            &ProfileStrip::setCategory);
    connect(setup_, &LiveSetup::liveChanged, this, [this](bool live) {
        status_->showInfo(live ? QStringLiteral("On air") : QStringLiteral("Off air"));
    });
    connect(login_, &LoginPage::loggedIn, this, &PanelWindow::startSession);
    connect(service_.get(), &PanelService::showEnded, this, [this](int reason) {
        status_->showInfo(QStringLiteral("The platform ended the show (reason %1)").arg(reason));
        setup_->refreshLiveState();
    });
    if (!service_->isValid()) {
        status_->showFailure(QStringLiteral("CreateNetService"), -1, QString());
        return;
    }
    status_->showInfo(QStringLiteral("Starting the service\u2026"));
    connect(service_.get(), &PanelService::ready, this, [this] {
        status_->showInfo(QStringLiteral("Scan the code with the app, or log in with a password"));
        login_->requestQrCode();
    });
}

PanelWindow::~PanelWindow() = default;

void PanelWindow::startSession() {
    loggedIn_ = true;
    status_->showInfo(QStringLiteral("Logged in; loading the room\u2026"));
    service_->call(
        this,
        [](ILiveencoderNetService& service) {
            Session session;
            service.getUserRecord(session.user);
            // Loads the room information, then connects to the room's barrage in the background.
            session.barrage = service.startBarrage();
            service.getRoomRecord(session.room);
            session.anchorLevel = service.getAnchorLevel();
            return session;
        },
        [this](const Session& session) {
            ProfileStrip::Profile profile;
            profile.nickname = text(session.user.nickname);
            profile.uid = text(session.user.uid);
            profile.roomId = session.room.roomId;
            profile.roomTitle = text(session.room.roomName);
            profile.anchorLevel = session.anchorLevel;
            profile_->setProfile(profile);
            profile_->setCategory(text(session.room.gameName), text(session.room.childName));
            pages_->setCurrentIndex(1);
            if (session.barrage != 0) {
                status_->showFailure(QStringLiteral("startBarrage"), session.barrage, QString());
            } else {
                status_->showInfo(QStringLiteral("Welcome, %1").arg(profile.nickname));
            }
            setup_->start();
        });
}

void PanelWindow::closeEvent(QCloseEvent* event) {
    if (!service_) {
        event->accept();
        return;
    }
    event->ignore();
    if (closing_) {
        return;
    }
    closing_ = true;
    centralWidget()->setEnabled(false);
    status_->showInfo(QStringLiteral("Closing\u2026"));
    // stop() ends the barrage and the requests; the release that follows is then quick.
    service_->call(
        this, [](ILiveencoderNetService& service) { service.stop(); },
        [this] {
            // The pages go first: nothing may call the service once it is released.
            delete takeCentralWidget();
            service_.reset();
            close();
        });
}
