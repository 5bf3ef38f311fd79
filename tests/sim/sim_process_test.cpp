// tolvane-sim as a process of its own: what a host developer runs beside their host.
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <map>

#include "barrage/barrage_server.h"
#include "log/log_writer.h"
#include "platform/sim_platform.h"
#include "relay/sim_relay.h"
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

// Keeps the text of every chat and gift the host hears, the streamer's barrage proper.
class BarrageTextRecorder : public RecordingObserver {
public:
    void onBarrageMessage(const BarrageMessage* message) override {
        RecordingObserver::onBarrageMessage(message);
        if (message->typeName == "chatmsg" || message->typeName == "gift") {
            add("text " + message->rawText);
        }
    }
};

// A module logs in as the anchor and listens until its host heard `count` events that start
// with `what`.
void listen(RecordingObserver& host, const char* what, std::size_t count) {
    VxNetServiceImp service(&host, nullptr);
    std::string error, token;
    ASSERT_EQ(service.login("anchor", "secret123", error, token), 0) << error;
    ASSERT_EQ(service.startBarrage(), 0);
    EXPECT_TRUE(waitUntil([&] { return host.events(what).size() >= count; }, 10000))
        << "watchdog: waiting for " << count << " of " << what << ", heard "
        << host.events(what).size();
    service.stop();
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
    {
        ScopedEnv pointAtSim("TOLVANE_DEFAULT_DATA", data.fileName().toLocal8Bit());
        RecordingObserver host;
        listen(host, "message chatmsg", 2);
    }

    sim.terminate();
    ASSERT_TRUE(sim.waitForFinished(10000));
    EXPECT_EQ(sim.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(sim.exitCode(), 0);
}

TEST(SimProcess, RefusesArgumentsItDoesNotKnow) {
    for (const char* refused : {"--port", "--port 70000", "--barrage-rate fast", "--data-dir",
                                "--verbose", "--latency -5", "--speed 0", "--replay"}) {
        QProcess sim;
        sim.start(QStringLiteral(TOLVANE_SIM_PATH), QString::fromLatin1(refused).split(' '));
        ASSERT_TRUE(sim.waitForFinished(10000)) << refused;
        EXPECT_EQ(sim.exitCode(), 2) << refused;
    }
}

// A streamer's barrage, recorded in the module's msg.log behind a slow line, reaches a host again
// in order when the simulator replays that log.
TEST(SimProcess, ReplaysARecordedBarrageLogBehindASlowLine) {
    IsolatedWorkspace workspace;
    BarrageTextRecorder recorded;
    {
        tolvane::sim::SimEnvironment::Options slow;
        slow.link.latencyMs = 20;
        tolvane::sim::SimPlatform sim(workspace.path(), slow);
        ASSERT_TRUE(sim.start());
        ASSERT_TRUE(sim.startBarrageServers(1));
        sim.barrageServer(0).setGeneratorRate(300);
        listen(recorded, "text ", 30);
        EXPECT_EQ(sim.barrageRelay(0)->connections(), 1);
        EXPECT_GE(sim.environment().relay()->connections(), 1);
    }
    const std::vector<std::string> expected = recorded.events("text ");

    QProcess sim;
    const auto banner =
        startSim(sim, workspace.path(),
                 {QStringLiteral("--latency"), QStringLiteral("40"), QStringLiteral("--replay"),
                  tolvane::log::logFilePath(tolvane::log::kMessageLog), QStringLiteral("--speed"),
                  QStringLiteral("4")});
    ASSERT_EQ(banner.count(QStringLiteral("default.data")), 1u);
    EXPECT_EQ(banner.count(QStringLiteral("relay")), 1u);
    EXPECT_EQ(banner.count(QStringLiteral("replay")), 1u);
    {
        ScopedEnv pointAtSim("TOLVANE_DEFAULT_DATA",
                             banner.at(QStringLiteral("default.data")).toLocal8Bit());
        BarrageTextRecorder replayed;
        listen(replayed, "text ", expected.size());
        EXPECT_EQ(replayed.events("text "), expected);
    }
    sim.terminate();
    ASSERT_TRUE(sim.waitForFinished(10000));
    // The module's web requests and its barrage connection both went through relays.
    const QString tail = QString::fromLocal8Bit(sim.readAllStandardOutput());
    const int at = tail.indexOf(QStringLiteral("relayed connections: "));
    ASSERT_GE(at, 0) << tail.toStdString();
    EXPECT_GE(tail.mid(at + 21).trimmed().toInt(), 2);
}
