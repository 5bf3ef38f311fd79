// 200 signed descriptor POSTs over HTTPS to the simulator: one client that keeps its
// connection, against a fresh libcurl handle (a fresh client) for every request.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>

#include "bench_fixture.h"
#include "http/sim_http_server.h"
#include "net/vx_net_request.h"

namespace {

constexpr int kRequestsPerRun = 200;
constexpr int kEnvironment = 1;

struct Fixture {
    tolvane::sim::SimCertificateAuthority authority;
    tolvane::sim::SimHttpServer server{kEnvironment};
    QTemporaryDir dir;
    bool ready = false;

    Fixture() {
        if (!authority.isValid() || !server.startHttps(authority.trustedIdentity())) {
            return;
        }
        const QString dataPath = dir.filePath(QStringLiteral("default.data"));
        QFile file(dataPath);
        file.open(QIODevice::WriteOnly);
        const QJsonObject endpoints{{"origin", QString::fromStdString(server.httpsOrigin())}};
        file.write(
            QJsonDocument(QJsonObject{{"app.domain", kEnvironment}, {"endpoints", endpoints}})
                .toJson());
        file.close();
        qputenv("TOLVANE_DEFAULT_DATA", dataPath.toLocal8Bit());
        qputenv("TMPDIR", dir.path().toLocal8Bit());
        ready = true;
    }

    std::unique_ptr<VxNetRequest> client() {
        auto request = std::make_unique<VxNetRequest>(kEnvironment, nullptr, nullptr);
        request->setCaFile(authority.caFile());
        return request;
    }
};

Fixture* fixture = nullptr;

bool postOnce(VxNetRequest& request, int index) {
    RequestDescriptor descriptor;
    descriptor.kind = 2;
    descriptor.path = QStringLiteral("sim/echo/query");
    descriptor.groupB = {{"index", QString::number(index)}};
    descriptor.groupC = {{"text", QStringLiteral("弹幕 %1").arg(index)}};
    tolvane::net::CommonValues common;
    common.time = 1700000000 + index;
    QByteArray reply;
    return request.requestPost(reply, descriptor, common);
}

void BM_ReusedConnection(benchmark::State& state) {
    if (!tolvane::bench::fixtureReady(state, fixture, "simulator did not start")) {
        return;
    }
    for (auto _ : state) {
        state.PauseTiming();
        auto request = fixture->client();
        state.ResumeTiming();
        for (int i = 0; i < kRequestsPerRun; ++i) {
            if (!postOnce(*request, i)) {
                state.SkipWithError("request failed");
                return;
            }
        }
    }
    state.counters["requests"] = kRequestsPerRun;
}

void BM_FreshHandlePerRequest(benchmark::State& state) {
    if (!tolvane::bench::fixtureReady(state, fixture, "simulator did not start")) {
        return;
    }
    for (auto _ : state) {
        for (int i = 0; i < kRequestsPerRun; ++i) {
            // Only the request is timed, not the building of the client around its handle.
            state.PauseTiming();
            auto request = fixture->client();
            state.ResumeTiming();
            if (!postOnce(*request, i)) {
                state.SkipWithError("request failed");
                return;
            }
        }
    }
    state.counters["requests"] = kRequestsPerRun;
}

BENCHMARK(BM_ReusedConnection)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_FreshHandlePerRequest)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

int main(int argc, char** argv) {
    return tolvane::bench::runWithFixture(argc, argv, fixture);
}
