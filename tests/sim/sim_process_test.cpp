// tolvane-sim as a process of its own: what a host developer runs beside their host.
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <map>

#include "barrage/barrage_texts.h"
#include "service/vx_net_service_imp.h"
#include "support/recording_observer.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

// Starts the simulator in the workspace and reads the lines "key: value" it prints before it
// serves; the origin line has no key.
std::map<QString, QString> startSim(QProcess& sim, const QString& workspace, QStringList args) {
    sim.start(QStringLiteral(TOLVANE_SIM_PATH),
              args << QStringLiteral("--data-dir") << workspace + QStringLiteral("/sim"));
    std::map<QString, QString> banner;
    waitUntil(
        [&] {
            while (sim.canReadLine()) {
                const QString line = QString::fromLocal8Bit(sim.readLine()).trimmed();
                const int colon = line.indexOf(QStringLiteral(": "));
                banner[colon < 0 ? QStringLiteral("origin") : line.left(colon)] =
                    line.mid(colon < 0 ? 0 : colon + 2);
            }
            return banner.count(QStringLiteral("default.data")) == 1 ||
                   sim.state() == QProcess::NotRunning;
        },
        10000);
    EXPECT_EQ(banner.count(QStringLiteral("default.data")), 1u)
        << "watchdog: waiting for the simulator's banner; "
        << sim.readAllStandardError().toStdString();
    return banner;
}

// A module pointed at the simulator by its data file logs in and listens until it heard the
// number of chats; how many it heard.
std::size_t chatsHeard(const std::map<QString, QString>& banner, std::size_t chats) {
    const auto data = banner.find(QStringLiteral("default.data"));
    if (data == banner.end()) {
        return 0;
    }
    ScopedEnv pointAtSim("TOLVANE_DEFAULT_DATA", data->second.toLocal8Bit());
    RecordingObserver observer;
    VxNetServiceImp service(&observer, nullptr);
    std::string error, token;
    EXPECT_EQ(service.login("anchor", "secret123", error, token), 0) << error;
    EXPECT_EQ(service.startBarrage(), 0);
    EXPECT_TRUE(
        waitUntil([&] { return observer.events("message chatmsg").size() >= chats; }, 10000))
        << "watchdog: waiting for " << chats << " chats";
    service.stop();
    return observer.events("message chatmsg").size();
}

}  // namespace

TEST(SimProcess, ServesThePlatformAndItsBarrageToAModule) {
    IsolatedWorkspace workspace;
    QProcess sim;
    const auto banner =
        startSim(sim, workspace.path(), {QStringLiteral("--barrage-rate"), QStringLiteral("20")});
    ASSERT_EQ(banner.count(QStringLiteral("default.data")), 1u);
    EXPECT_EQ(banner.count(QStringLiteral("barrage")), 1u);

    // The file it names points at the origin it printed.
    QFile data(banner.at(QStringLiteral("default.data")));
    ASSERT_TRUE(data.open(QIODevice::ReadOnly));
    const QJsonObject endpoints =
        QJsonDocument::fromJson(data.readAll()).object().value("endpoints").toObject();
    EXPECT_EQ(endpoints.value("origin").toString(), banner.at(QStringLiteral("origin")));
    EXPECT_GE(chatsHeard(banner, 2), 2u);

    sim.terminate();
    ASSERT_TRUE(sim.waitForFinished(10000));
    EXPECT_EQ(sim.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(sim.exitCode(), 0);
}

TEST(SimProcess, RefusesArgumentsItDoesNotKnow) {
    const QStringList refused[] = {
        {QStringLiteral("--port")},
        {QStringLiteral("--port"), QStringLiteral("70000")},
        {QStringLiteral("--barrage-rate"), QStringLiteral("fast")},
        {QStringLiteral("--data-dir")},
        {QStringLiteral("--verbose")},
        {QStringLiteral("--latency"), QStringLiteral("-5")},
        {QStringLiteral("--speed"), QStringLiteral("0")},
        {QStringLiteral("--replay")},
    };
    for (const QStringList& arguments : refused) {
        QProcess sim;
        sim.start(QStringLiteral(TOLVANE_SIM_PATH), arguments);
        ASSERT_TRUE(sim.waitForFinished(10000)) << arguments.join(' ').toStdString();
        EXPECT_EQ(sim.exitCode(), 2) << arguments.join(' ').toStdString();
    }
}

TEST(SimProcess, ReplaysABarrageLogBehindASlowLine) {
    IsolatedWorkspace workspace;
    // Three chats around midnight between the lines a client writes about itself.
    const std::string chats[] = {sim::BarrageTexts::chat(7, 880001, 2001, "night", "one"),
                                 sim::BarrageTexts::chat(8, 880001, 2002, "owl", "two"),
                                 sim::BarrageTexts::chat(9, 880001, 2001, "night", "three")};
    QFile log(workspace.path() + QStringLiteral("/recorded_msg.log"));
    ASSERT_TRUE(log.open(QIODevice::WriteOnly));
    log.write(("[23:59:59.900] \r\n[23:59:59.950] " + chats[0] +
               "\r\n[23:59:59.990] [msg] onMsgKeepLive\r\n[00:00:00.050] " + chats[1] +
               "\r\n[00:00:00.100] onMsgError: 51\r\n[00:00:00.150] " + chats[2] + "\r\n")
                  .c_str());
    log.close();

    QProcess sim;
    const auto banner =
        startSim(sim, workspace.path(),
                 {QStringLiteral("--latency"), QStringLiteral("40"), QStringLiteral("--replay"),
                  log.fileName(), QStringLiteral("--speed"), QStringLiteral("2")});
    EXPECT_EQ(banner.count(QStringLiteral("relay")), 1u);
    EXPECT_EQ(banner.count(QStringLiteral("replay")), 1u);
    EXPECT_EQ(chatsHeard(banner, 3), 3u);
    sim.terminate();
    ASSERT_TRUE(sim.waitForFinished(10000));
    // The module's web requests and its barrage connection both went through relays.
    const QString tail = QString::fromLocal8Bit(sim.readAllStandardOutput());
    const int at = tail.indexOf(QStringLiteral("relayed connections: "));
    ASSERT_GE(at, 0) << tail.toStdString();
    EXPECT_GE(tail.mid(at + 21).trimmed().toInt(), 2);
}
