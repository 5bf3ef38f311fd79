// The time to go live over HTTPS behind an imitated line: login, user information, room start-up
// with gateway and barrage login, category, push lines, start of the show, until the first
// barrage message reaches the host. Reported beside the floor for the same road: one TCP connect
// and one TLS handshake per origin, then one round trip per request in the order the
// synchronous interface imposes, the barrage connection running beside the later requests.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>
#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "barrage/barrage_server.h"
#include "bench_fixture.h"
#include "net/endpoints.h"
#include "platform/sim_platform.h"
#include "relay/sim_relay.h"
#include "service/vx_net_service_imp.h"
#include "tolvane/service_observer.h"

namespace {

// Chess / Rapid, a pick the room did not start with.
constexpr int32_t kCid2 = 12;
constexpr int32_t kCid3 = 122;
constexpr int kStepTimeoutMs = 30000;

// Requests the module makes off the road: the server time at construction and the gift
// catalogue, which its own thread fetches.
const std::set<std::string> kBackgroundPaths = {
    "/api/v1/timestamp",
    "/api/gift/v2/web/template",
    "/api/prop/v1/web/list",
    "/api/gift/v2/web/single",
    "/api/prop/v1/web/single",
    "/api/gift/v1/web/commonConfig",
    "/resource/common/property_info.json",
    "/resource/noble/openeffect/web.json",
    "/resource/common/fans_medal_web_v3.json",
    "/resource/common/config/inter_com_w_diamond_fans.json",
};

// Counts the barrage messages that are not the connection's own login reply.
class FirstMessageObserver : public ServiceObserver {
public:
    std::atomic<int> messages{0};
    void onRoomStatus(int32_t) override {}
    void onText(const std::string&) override {}
    void onShowEnd(int32_t, float) override {}
    void onBarrageMessage(const BarrageMessage* message) override {
        if (message->typeName != "loginres") {
            ++messages;
        }
    }
};

// The event loop runs as a host's would, each step within its time limit.
bool runEventsUntil(const std::function<bool()>& done) {
    return tolvane::bench::runEventsUntil(done, kStepTimeoutMs);
}

struct RoadCounts {
    int roadRequests = 0;
    int backgroundRequests = 0;
    int origins = 0;  // distinct origins of the road's requests
};

RoadCounts countRequests(const std::vector<tolvane::sim::SimRequest>& requests) {
    RoadCounts counts;
    std::set<std::string> origins;
    for (const auto& request : requests) {
        if (kBackgroundPaths.count(request.path) != 0) {
            ++counts.backgroundRequests;
        } else {
            ++counts.roadRequests;
            origins.insert(request.header("Host"));
        }
    }
    counts.origins = static_cast<int>(origins.size());
    return counts;
}

// The platform's hosts apart, as the production address tables have them: every host of the
// tables gets a relay of its own (an origin of its own) in front of the one simulator, and
// default.data names each base address and host through it. The content API's host keeps the
// simulator's own origin.
class HostsApart {
public:
    HostsApart(tolvane::sim::SimPlatform& sim, const tolvane::sim::SimLinkShape& link) {
        const std::string apiHost = QUrl(tolvane::net::compiledHost(0, 0)).host().toStdString();
        const QString simOrigin = QString::fromStdString(sim.environment().origin());
        QJsonObject base, host;
        for (int kind = 0; kind < tolvane::net::kBaseKindCount; ++kind) {
            const QUrl cell(tolvane::net::compiledBaseAddress(kind, 0));
            base.insert(QString::number(kind),
                        originOf(sim, link, cell, apiHost, simOrigin) + cell.path());
        }
        for (int kind = 0; kind < tolvane::net::kHostKindCount; ++kind) {
            const QUrl cell(tolvane::net::compiledHost(kind, 0));
            host.insert(QString::number(kind), originOf(sim, link, cell, apiHost, simOrigin));
        }
        sim.environment().setExtraSettings(QJsonObject{
            {QStringLiteral("endpoints"),
             QJsonObject{{QStringLiteral("base"), base}, {QStringLiteral("host"), host}}}});
        sim.environment().writeDefaultData();
    }
    int connections() const {
        int sum = 0;
        for (const auto& entry : relays_) {
            sum += entry.second->connections();
        }
        return sum;
    }
    int tlsHandshakes() const {
        int sum = 0;
        for (const auto& entry : relays_) {
            sum += entry.second->tlsHandshakes();
        }
        return sum;
    }

private:
    QString originOf(tolvane::sim::SimPlatform& sim, const tolvane::sim::SimLinkShape& link,
                     const QUrl& cell, const std::string& apiHost, const QString& simOrigin) {
        const std::string name = cell.host().toStdString();
        if (name == apiHost) {
            return simOrigin;
        }
        auto& relay = relays_[name];
        if (!relay) {
            relay = std::make_unique<tolvane::sim::SimRelay>(
                tolvane::sim::SimRelay::host(), static_cast<uint16_t>(sim.http().httpsPort()),
                link);
            relay->start();
        }
        return QStringLiteral("https://%1:%2")
            .arg(QString::fromLatin1(tolvane::sim::SimRelay::host()))
            .arg(relay->port());
    }

    std::map<std::string, std::unique_ptr<tolvane::sim::SimRelay>> relays_;
};

void BM_GoLive(benchmark::State& state) {
    const int latency = static_cast<int>(state.range(0));
    const bool hostsApart = state.range(1) == 1;
    QTemporaryDir dir;
    qputenv("TMPDIR", dir.path().toLocal8Bit());
    tolvane::sim::SimEnvironment::Options options;
    options.https = true;
    options.link.latencyMs = latency;
    options.link.relayAlways = true;
    tolvane::sim::SimPlatform sim(dir.path(), options);
    if (!sim.start() || !sim.startBarrageServers(1)) {
        state.SkipWithError("the simulator did not start");
        return;
    }
    qputenv("TOLVANE_CA_FILE", QByteArray::fromStdString(sim.environment().caFile()));
    // A busy room: the first message follows the barrage login within a millisecond.
    sim.barrageServer(0).setGeneratorRate(1000);
    const tolvane::sim::SimRelay& api = *sim.environment().relay();
    const tolvane::sim::SimRelay& barrage = *sim.barrageRelay(0);
    std::unique_ptr<HostsApart> apart;
    if (hostsApart) {
        apart = std::make_unique<HostsApart>(sim, options.link);
    }
    auto relayedConnections = [&] {
        return api.connections() + barrage.connections() + (apart ? apart->connections() : 0);
    };
    auto relayedHandshakes = [&] {
        return api.tlsHandshakes() + (apart ? apart->tlsHandshakes() : 0);
    };

    double totalMs = 0;
    double totalFloorMs = 0;
    RoadCounts total;
    int connections = 0, handshakes = 0;
    double steps[6] = {};
    for (auto _ : state) {
        FirstMessageObserver observer;
        VxNetServiceImp service(&observer, nullptr);
        // The server time it asks for at construction comes back before the host goes live.
        QElapsedTimer settle;
        settle.start();
        runEventsUntil([&] { return settle.elapsed() > 4 * latency + 100; });
        sim.http().requestLog().clear();
        const int connectionsBefore = relayedConnections();
        const int handshakesBefore = relayedHandshakes();

        QElapsedTimer clock;
        clock.start();
        qint64 mark = 0;
        auto step = [&](int index) {
            const qint64 now = clock.nsecsElapsed();
            steps[index] += static_cast<double>(now - mark) / 1e6;
            mark = now;
        };
        std::string error, token;
        bool ok = service.login("anchor", "secret123", error, token) == 0;
        step(0);
        ok = ok && service.startBarrage() == 0;
        step(1);
        const RoadCounts upToBarrage = countRequests(sim.http().requestLog().all());
        ok = ok && service.setLiveClassify(kCid2, kCid3, error) == 0;
        step(2);
        LiveParameters parameters;
        parameters.cid2 = kCid2;
        parameters.cid3 = kCid3;
        service.setLiveParameters(parameters);
        PushAddress* mainLines = nullptr;
        PushAddress* h265Lines = nullptr;
        int32_t mainCount = 0, h265Count = 0;
        ok = ok &&
             service.get_all_rtmp_addresses(mainLines, mainCount, h265Lines, h265Count) == 0 &&
             mainCount > 0;
        const std::string pushUrl = ok ? mainLines[0].url : std::string();
        service.freeArray(mainLines);
        service.freeArray(h265Lines);
        step(3);
        ok = ok && service.open_live_room(pushUrl) == 0;
        step(4);
        ok = ok && runEventsUntil([&] { return observer.messages.load() > 0; });
        step(5);
        const double elapsedMs = static_cast<double>(clock.nsecsElapsed()) / 1e6;
        if (!ok) {
            state.SkipWithError("a step of the road failed");
            return;
        }
        state.SetIterationTime(elapsedMs / 1000);
        totalMs += elapsedMs;

        const RoadCounts counts = countRequests(sim.http().requestLog().all());
        total.roadRequests += counts.roadRequests;
        total.backgroundRequests += counts.backgroundRequests;
        connections += relayedConnections() - connectionsBefore;
        handshakes += relayedHandshakes() - handshakesBefore;
        total.origins += counts.origins;
        // Each origin's connect and handshake, then the requests in turn; and the barrage
        // server's connect and login after the room start-up, beside the later requests.
        const int httpsRoundTrips = 2 * counts.origins + counts.roadRequests;
        const int barrageRoundTrips = 2 * upToBarrage.origins + upToBarrage.roadRequests + 2;
        totalFloorMs += latency * std::max(httpsRoundTrips, barrageRoundTrips);

        service.stop_live_room();
        service.logout();
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["floor_ms"] = totalFloorMs / n;
    if (totalFloorMs > 0) {
        state.counters["x_floor"] = totalMs / totalFloorMs;
    }
    state.counters["requests"] = total.roadRequests / n;
    state.counters["origins"] = total.origins / n;
    state.counters["background"] = total.backgroundRequests / n;
    state.counters["connections"] = connections / n;
    state.counters["tls"] = handshakes / n;
    const char* names[] = {"login_ms", "startup_ms", "category_ms",
                           "lines_ms", "live_ms",    "message_ms"};
    for (int i = 0; i < 6; ++i) {
        state.counters[names[i]] = steps[i] / n;
    }
}

// Round trips of 0, 50 and 150 ms; the platform's hosts on one origin (0, the simulator's
// default) or apart as in the production tables (1).
BENCHMARK(BM_GoLive)
    ->ArgNames({"rtt_ms", "hosts_apart"})
    ->ArgsProduct({{0, 50, 150}, {0, 1}})
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
