// The panel's whole road against a tolvane-sim of the installed package, headless: QR login
// (an expired code first, then a fresh one that the simulator scans and confirms), category and
// tag, push lines, going live, a few seconds of barrage, stopping and closing. The GUI thread's
// event loop must never be held for more than 100 ms, and no step may show a failure.
#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTreeWidget>
#include <QUrlQuery>
#include <QtTest>
#include <memory>

#include "category_picker.h"
#include "event_loop_watchdog.h"
#include "feed_model.h"
#include "live_setup.h"
#include "login_page.h"
#include "panel_window.h"
#include "profile_strip.h"
#include "room_panel.h"
#include "sim_process.h"
#include "status_line.h"

namespace {

constexpr qint64 kLongestHoldMs = 100;

// Chess / Rapid: a category with tags that is not the simulated room's starting one.
constexpr int kCid2 = 12;
constexpr int kCid3 = 122;

}  // namespace

// Waits with the event loop turning; on time-out the test fails naming what it waited for.
#define WAIT_FOR(step, condition, timeoutMs)                                                    \
    do {                                                                                        \
        watchdog_.setStep(QStringLiteral(step));                                                \
        QVERIFY2(                                                                               \
            QTest::qWaitFor([&] { return (condition); }, (timeoutMs)),                          \
            qPrintable(QStringLiteral("timed out waiting for: %1").arg(QStringLiteral(step)))); \
        checkClean(QStringLiteral(step));                                                       \
        if (QTest::currentTestFailed()) {                                                       \
            return;                                                                             \
        }                                                                                       \
    } while (false)

class PanelRoadTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void wholeRoad();
    void cleanupTestCase();

private:
    // Fails the test when the event loop was held too long or the status line shows a failure.
    void checkClean(const QString& step);
    void shoot(const QString& name);
    // Runs a helper program without blocking the event loop; its standard output, or empty.
    QByteArray runTool(const QString& program, const QStringList& arguments);
    void logIn();
    void chooseCategoryAndTag();
    void goLiveAndWatch();

    SimProcess sim_;
    std::unique_ptr<PanelWindow> window_;
    EventLoopWatchdog watchdog_;
    QList<LoginPage::QrState> seenStates_;
    int expectedFailures_ = 0;  // failures the test provoked on purpose
};

void PanelRoadTest::initTestCase() {
    QDir().mkpath(QStringLiteral(PANEL_SCREENSHOT_DIR));
    bool ready = false;
    QString failure;
    connect(&sim_, &SimProcess::ready, this, [&ready] { ready = true; });
    connect(&sim_, &SimProcess::failed, this, [&failure](const QString& why) { failure = why; });
    // A busier room than the default, so that a few seconds show every kind of message.
    sim_.start({QStringLiteral("--barrage-rate"), QStringLiteral("30")});
    QVERIFY2(QTest::qWaitFor([&] { return ready || !failure.isEmpty(); }, 10000),
             "timed out waiting for: the simulator to start");
    QVERIFY2(ready, qPrintable(failure));
    qputenv("TOLVANE_DEFAULT_DATA", sim_.defaultDataPath().toLocal8Bit());
}

void PanelRoadTest::cleanupTestCase() {
    qInfo("longest hold of the event loop: %lld ms, during \"%s\"", watchdog_.worstGapMs(),
          qPrintable(watchdog_.worstStep()));
    window_.reset();
}

void PanelRoadTest::checkClean(const QString& step) {
    QVERIFY2(watchdog_.worstGapMs() <= kLongestHoldMs,
             qPrintable(QStringLiteral("the event loop was held for %1 ms during \"%2\"")
                            .arg(watchdog_.worstGapMs())
                            .arg(watchdog_.worstStep())));
    if (window_) {
        const QStringList failures = window_->statusLine().failures().mid(expectedFailures_);
        QVERIFY2(
            failures.isEmpty(),
            qPrintable(
                QStringLiteral("after \"%1\": %2").arg(step, failures.join(QStringLiteral("; ")))));
    }
}

void PanelRoadTest::shoot(const QString& name) {
    const QString path = QStringLiteral(PANEL_SCREENSHOT_DIR "/%1.png").arg(name);
    QVERIFY2(window_->grab().save(path), qPrintable(path));
    watchdog_.skipGap();  // the grab is the test's own work, not the panel's
}

QByteArray PanelRoadTest::runTool(const QString& program, const QStringList& arguments) {
    QProcess tool;
    tool.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    tool.start(program, arguments);
    watchdog_.skipGap();  // starting a process is the test's own work
    if (!QTest::qWaitFor([&] { return tool.state() == QProcess::NotRunning; }, 10000) ||
        tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        tool.kill();
        tool.waitForFinished(1000);
        return QByteArray();
    }
    return tool.readAllStandardOutput().trimmed();
}

void PanelRoadTest::wholeRoad() {
    window_ = std::make_unique<PanelWindow>();
    connect(&window_->loginPage(), &LoginPage::qrStateChanged, this,
            [this](LoginPage::QrState state) { seenStates_.append(state); });
    window_->show();
    QVERIFY(QTest::qWaitForWindowExposed(window_.get()));
    watchdog_.start(QStringLiteral("start"));

    logIn();
    if (QTest::currentTestFailed()) {
        return;
    }
    chooseCategoryAndTag();
    if (QTest::currentTestFailed()) {
        return;
    }
    goLiveAndWatch();
    if (QTest::currentTestFailed()) {
        return;
    }

    QTest::mouseClick(window_->liveSetup().stopButton(), Qt::LeftButton);
    LiveSetup& setup = window_->liveSetup();
    WAIT_FOR("the room to go offline", !setup.isLive() && setup.goLiveButton()->isEnabled(), 10000);
    shoot(QStringLiteral("05-stopped"));

    window_->close();
    WAIT_FOR("the window to close", window_->isShutDown() && !window_->isVisible(), 10000);
}

void PanelRoadTest::logIn() {
    LoginPage& login = window_->loginPage();
    WAIT_FOR("a QR code", login.qrState() == LoginPage::QrState::Waiting, 10000);
    shoot(QStringLiteral("01-qr-code"));

    // A wrong password: the button waits for the answer, the status line names the refusal.
    const StatusLine& status = window_->statusLine();
    login.nameField()->setText(QStringLiteral("anchor"));
    login.passwordField()->setText(QStringLiteral("wrong"));
    QTest::mouseClick(login.logInButton(), Qt::LeftButton);
    QVERIFY2(!login.logInButton()->isEnabled(), "Log in stays enabled while its call is pending");
    expectedFailures_ = 1;
    WAIT_FOR("the password refusal",
             status.failures().size() == 1 && login.logInButton()->isEnabled(), 10000);
    QVERIFY2(QRegularExpression(QStringLiteral("^login failed: \\w+ \\(-?\\d+\\) \u2014 .+"))
                 .match(status.failures().front())
                 .hasMatch(),
             qPrintable(status.failures().front()));

    // The phone lets the first code run out; the page offers a fresh one.
    const QString simulator = SimProcess::program();
    QVERIFY(!runTool(simulator, {QStringLiteral("qr"), QStringLiteral("expire"), sim_.origin(),
                                 login.qrCode()})
                 .isEmpty());
    WAIT_FOR("the code to expire", login.qrState() == LoginPage::QrState::Expired, 10000);
    const QString expiredCode = login.qrCode();
    QPushButton* newCode = login.newCodeButton();
    QVERIFY(newCode != nullptr && newCode->isEnabled());
    QTest::mouseClick(newCode, Qt::LeftButton);
    WAIT_FOR("a fresh QR code",
             login.qrState() == LoginPage::QrState::Waiting && login.qrCode() != expiredCode,
             10000);

    // The phone reads the code from the drawn image, as a camera would, then scans and confirms.
    const QString imagePath = QStringLiteral(PANEL_SCREENSHOT_DIR "/qr-code-only.png");
    QVERIFY(login.qrImage().save(imagePath));
    watchdog_.skipGap();
    const QByteArray scanned = runTool(
        QStringLiteral("zbarimg"), {QStringLiteral("--quiet"), QStringLiteral("--raw"), imagePath});
    const QString code =
        QUrlQuery(QUrl(QString::fromUtf8(scanned))).queryItemValue(QStringLiteral("code"));
    QVERIFY2(!code.isEmpty() && code == login.qrCode(),
             qPrintable(QStringLiteral("the image reads \"%1\"").arg(QString::fromUtf8(scanned))));
    QVERIFY(
        !runTool(simulator, {QStringLiteral("qr"), QStringLiteral("confirm"), sim_.origin(), code})
             .isEmpty());
    WAIT_FOR("the login", window_->isLoggedIn(), 10000);
    QVERIFY2(seenStates_.contains(LoginPage::QrState::Scanned), "the page never showed the scan");
    QVERIFY(seenStates_.contains(LoginPage::QrState::Confirmed));

    const ProfileStrip& strip = window_->profileStrip();
    WAIT_FOR("the profile", strip.profile().roomId > 0, 10000);
    QVERIFY(!strip.profile().nickname.isEmpty());
    QVERIFY(!strip.profile().uid.isEmpty());
    QVERIFY(!strip.profile().roomTitle.isEmpty());
}

void PanelRoadTest::chooseCategoryAndTag() {
    LiveSetup& setup = window_->liveSetup();
    CategoryPicker& picker = setup.picker();
    QTreeWidget* tree = picker.categories();
    WAIT_FOR("the category tree", tree->topLevelItemCount() > 1 && tree->isEnabled(), 10000);
    QTreeWidgetItem* rapid = nullptr;
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it) {
        if ((*it)->data(0, CategoryPicker::kCid2Role).toInt() == kCid2 &&
            (*it)->data(0, CategoryPicker::kCid3Role).toInt() == kCid3) {
            rapid = *it;
        }
    }
    QVERIFY2(rapid != nullptr, "the tree has no third level under the second");
    tree->scrollToItem(rapid);
    tree->setCurrentItem(rapid);
    WAIT_FOR("the category's tags", picker.tags()->count() > 0 && picker.tags()->isEnabled(),
             10000);
    picker.tags()->item(0)->setSelected(true);
    WAIT_FOR("the tag", picker.chosenTag() != 0 && picker.tags()->isEnabled(), 10000);
    shoot(QStringLiteral("02-category"));

    QListWidget* lines = setup.pushLines();
    const auto listed = [lines](const char* kind) {
        return !lines->findItems(QLatin1String(kind), Qt::MatchStartsWith).isEmpty();
    };
    WAIT_FOR("the push lines",
             listed("main") && listed("H.265") && setup.goLiveButton()->isEnabled(), 10000);
    shoot(QStringLiteral("03-push-lines"));
}

void PanelRoadTest::goLiveAndWatch() {
    LiveSetup& setup = window_->liveSetup();
    QVERIFY(!setup.stopButton()->isEnabled());
    QTest::mouseClick(setup.goLiveButton(), Qt::LeftButton);
    QVERIFY2(!setup.goLiveButton()->isEnabled(), "Go live stays enabled while its call is pending");
    WAIT_FOR("the room to go live", setup.isLive() && setup.stopButton()->isEnabled(), 10000);
    QVERIFY(!setup.goLiveButton()->isEnabled());

    const RoomPanel& room = window_->roomPanel();
    const FeedModel& feed = room.feed();
    WAIT_FOR("chat, gifts, counts and rankings",
             feed.chatCount() >= 3 && feed.itemCount() >= 3 && room.onlineCount() > 0 &&
                 room.memberCount() > 0 && room.rankingCount() >= 3,
             15000);
    // Gifts the room's template lacks are named once the catalogue has fetched them.
    WAIT_FOR("every gift named", feed.unnamedCount() == 0, 10000);
    watchdog_.setStep(QStringLiteral("the barrage"));
    const int chatsBefore = feed.chatCount();
    QTest::qWait(3000);
    QVERIFY2(feed.chatCount() > chatsBefore, "the feed stood still for three seconds");
    checkClean(QStringLiteral("the barrage"));
    shoot(QStringLiteral("04-live-room"));
}

// Qt 5's offscreen platform never deletes its screen; held here, the screen and what hangs off
// it stay reachable, so that the leak checker reports only leaks of the panel's own.
QScreen* volatile offscreenScreen = nullptr;

int main(int argc, char** argv) {
    // Headless unless told otherwise.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    offscreenScreen = QGuiApplication::primaryScreen();
    PanelRoadTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "panel_road_test.moc"
