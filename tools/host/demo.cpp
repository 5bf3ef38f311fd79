#include "demo.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QString>
#include <QTemporaryDir>
#include <QThread>

#include "barrage/barrage_server.h"
#include "demo_road.h"
#include "platform/sim_platform.h"
#include "printing_observer.h"
#include "slow_line_options.h"

void DemoRoad::step(const QString& name, const QString& result) {
    out_ << QStringLiteral("%1 %2").arg(name, -30, QLatin1Char('.')).arg(result) << Qt::endl;
}

bool DemoRoad::check(const QString& name, int32_t code, const std::string& message,
                     const QString& shown) {
    return expect(
        name, code == 0,
        code == 0 ? shown : QStringLiteral("%1 %2").arg(code).arg(QString::fromStdString(message)));
}

bool DemoRoad::expect(const QString& name, bool met, const QString& shown) {
    step(name, met ? shown : QStringLiteral("failed %1").arg(shown));
    failed_ = failed_ || !met;
    return met;
}

bool DemoRoad::runEvents(int milliseconds, const std::function<bool()>& done) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        if (done && done()) {
            return true;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    return done && done();
}

void DemoRoad::run() {
    step(QStringLiteral("simulator"), QString::fromStdString(sim_.environment().origin()));
    if (logIn() && showRoom()) {
        showGiftCatalogue();
        goLive();
    }
}

bool DemoRoad::logIn() {
    service_.setClientVersion("00_1A_2B_3C_4D_5E", "v2.4.0.1");
    std::string text;
    service_.getUserDevice(text);
    step(QStringLiteral("User-Device"), QString::fromStdString(text));

    showQrLogin();
    std::string error, longToken;
    const int32_t refused = service_.login("traveller", "secret456", error, longToken);
    step(QStringLiteral("login traveller"),
         QStringLiteral("%1 (%2)").arg(refused).arg(QString::fromStdString(error)));
    bool foreign = false;
    std::string hidePhone, remoteCode;
    service_.getRemoteLoginInfo(foreign, hidePhone, remoteCode);
    step(QStringLiteral("confirm by SMS to"), QString::fromStdString(hidePhone));
    // The simulator plays the phone: it tells the demo the code it "sent".
    const std::string sms = sim_.state().passport().issueSmsCode(remoteCode);
    check(QStringLiteral("remoteLogin"), service_.remoteLogin(remoteCode, sms, longToken, error),
          error);
    service_.logout();
    service_.getToken(text);
    step(QStringLiteral("logout, token"), QString::fromStdString(text));

    if (!check(QStringLiteral("login anchor"),
               service_.login("anchor", "secret123", error, longToken), error)) {
        return false;
    }
    step(QStringLiteral("long token"), QString::fromStdString(longToken));
    service_.getToken(text);
    step(QStringLiteral("session token"), QString::fromStdString(text));
    UserRecord user;
    service_.getUserRecord(user);
    step(QStringLiteral("nickname"), QString::fromStdString(user.nickname));
    step(QStringLiteral("uid / sex / ident"), QStringLiteral("%1 / %2 / %3")
                                                  .arg(QString::fromStdString(user.uid))
                                                  .arg(user.sex)
                                                  .arg(QString::fromStdString(user.ident)));
    step(QStringLiteral("avatar (big)"), QString::fromStdString(user.avatarBig));
    step(QStringLiteral("avatar (small)"), QString::fromStdString(user.avatarSmall));
    step(QStringLiteral("own room"), user.isOwnRoom ? QStringLiteral("yes") : QStringLiteral("no"));
    const qint64 offset = service_.getServerTime() - QDateTime::currentSecsSinceEpoch();
    step(QStringLiteral("server time offset"), QStringLiteral("%1 s").arg(offset));
    return true;
}

bool DemoRoad::showRoom() {
    // The barrage start loads the room information, which the later steps need.
    if (!check(QStringLiteral("startBarrage"), service_.startBarrage())) {
        return false;
    }
    RoomSummary room;
    service_.getRoomRecord(room);
    step(QStringLiteral("room"), QStringLiteral("%1 \"%2\" (%3 / %4)")
                                     .arg(room.roomId)
                                     .arg(QString::fromStdString(room.roomName))
                                     .arg(QString::fromStdString(room.gameName))
                                     .arg(QString::fromStdString(room.childName)));
    step(QStringLiteral("room page"), QString::fromStdString(room.roomUrl));
    step(QStringLiteral("anchor level / vip"),
         QStringLiteral("%1 / %2").arg(service_.getAnchorLevel()).arg(service_.getVipId()));
    return true;
}

void DemoRoad::followBarrage() {
    out_ << "live feed for three seconds:" << Qt::endl;
    for (int i = 0; i < sim_.barrageServerCount(); ++i) {
        sim_.barrageServer(i).setGeneratorRate(12);
    }
    runEvents(3000);
    for (int i = 0; i < sim_.barrageServerCount(); ++i) {
        sim_.barrageServer(i).setGeneratorRate(0);
    }
    // A gift first seen in the feed is printed once the catalogue has fetched its name.
    runEvents(1000, [this] { return !observer_.namedLater().isEmpty(); });
    observer_.flushUnnamedGifts();
    step(QStringLiteral("gifts named mid-stream"),
         observer_.namedLater().join(QStringLiteral(", ")));
    sendGift();
    std::vector<std::string> latest;
    service_.barrageListCall(latest);
    step(QStringLiteral("online count"), QString::number(service_.getOnlineCount()));
    step(QStringLiteral("latest watched kinds"), QString::number(latest.size()));
}

int runDemo(CreateNetServiceFunction createNetService, PrintingObserver& observer, QStringList args,
            QTextStream& out, QTextStream& err) {
    tolvane::sim::SimEnvironment::Options options;
    if (!takeSlowLine(args, options) || !args.isEmpty()) {
        err << "usage: tolvane-host demo [--latency MS] [--bandwidth KBPS]" << Qt::endl;
        return 2;
    }
    out << "Tolvane demo: the broadcast road against the embedded platform simulator" << Qt::endl;
    QTemporaryDir folder;
    tolvane::sim::SimPlatform sim(folder.path(), options);
    if (!folder.isValid() || !sim.start()) {
        out << "cannot start the simulator" << Qt::endl;
        return 1;
    }
    // A platform clock that differs from ours shows the offset the module keeps.
    sim.state().setClockSkewSeconds(42);
    if (!sim.startBarrageServers(2)) {
        out << "cannot start the barrage servers" << Qt::endl;
        return 1;
    }

    ILiveencoderNetService* service = createNetService(&observer, &observer);
    if (service == nullptr) {
        out << "CreateNetService returned null" << Qt::endl;
        return 1;
    }
    // The feed prints gifts by name from the module's catalogue.
    observer.setCatalogue(service->getLiveRoomInfo());
    DemoRoad road(*service, sim, observer, out);
    road.run();
    observer.setCatalogue(nullptr);
    service->stop();
    road.step(QStringLiteral("stop"), QStringLiteral("done"));
    service->release();
    road.step(QStringLiteral("release"), QStringLiteral("done"));
    road.step(QStringLiteral("barrage messages received"),
              QString::number(observer.messageCount()));
    road.step(QStringLiteral("other updates"), observer.summary());
    road.step(QStringLiteral("breadcrumbs received"), QString::number(observer.breadcrumbCount()));
    return road.failed() ? 1 : 0;
}
