// What the operation table costs per call: the room-state operation through the runner, against
// the same request written out by hand as operations were before the table, in the same run.
// Both send to the simulator over loopback; the pure pair times only the building and signing.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>

#include "bench_fixture.h"
#include "log/log_writer.h"
#include "net/operation_request.h"
#include "net/signing.h"
#include "parse/data_parser.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::BaseKind;
using tolvane::net::HttpMethod;

struct Fixture {
    QTemporaryDir dir;
    std::unique_ptr<tolvane::sim::SimPlatform> sim;
    std::unique_ptr<VxNetServiceImp> service;
    DataParser parser;
    std::string token;
    bool ready = false;

    Fixture() {
        if (!tolvane::bench::startSimulator(dir, sim)) {
            return;
        }
        service = std::make_unique<VxNetServiceImp>(nullptr, nullptr);
        std::string error, longToken;
        ready = service->login("anchor", "secret123", error, longToken) == 0;
        service->getToken(token);
    }
};

Fixture* fixture = nullptr;

// The room-state request as it was written before the table: banners, the descriptor, slot 97,
// the parser, the failure line.
int32_t handWrittenRoomState(bool& live, bool& showType) {
    tolvane::log::writeBanner(QStringLiteral("VxNetServiceImp::getRoomState"));
    tolvane::log::writeBanner(QStringLiteral("VxNetServiceImp::requestRoomInfo"));
    RequestDescriptor request;
    request.kind = 2;
    request.path = QStringLiteral("my_room");
    request.groupB = {{QStringLiteral("aid"), QStringLiteral("vxtool")},
                      {QStringLiteral("time"), QString::number(fixture->service->getServerTime())}};
    request.groupC = {{QStringLiteral("token"), QString::fromStdString(fixture->token)},
                      {QStringLiteral("biz_type"), QStringLiteral("13")}};
    request.timeoutMs = 3000;
    QByteArray reply;
    if (!fixture->service->requestPost(reply, request)) {
        return 210;
    }
    const int32_t result = fixture->parser.parseIsRoomBroadcastingResult(reply, live, showType);
    if (result != 0) {
        tolvane::log::writeLine(tolvane::log::kMainLog,
                                QStringLiteral("result data : %1").arg(QString::fromUtf8(reply)));
    }
    return result;
}

void BM_RoomStateThroughRunner(benchmark::State& state) {
    if (!tolvane::bench::fixtureReady(state, fixture, "simulator did not start")) {
        return;
    }
    bool live = false, showType = false;
    for (auto _ : state) {
        if (fixture->service->getRoomState(live, showType) != 0) {
            state.SkipWithError("request failed");
            return;
        }
    }
}

void BM_RoomStateHandWritten(benchmark::State& state) {
    if (!tolvane::bench::fixtureReady(state, fixture, "simulator did not start")) {
        return;
    }
    bool live = false, showType = false;
    for (auto _ : state) {
        if (handWrittenRoomState(live, showType) != 0) {
            state.SkipWithError("request failed");
            return;
        }
    }
}

// Building and signing alone, where the runner's own work shows without the network.
void BM_PrepareThroughRow(benchmark::State& state) {
    const tolvane::net::OperationRow row =
        baseRow("requestRoomInfo", HttpMethod::Post, BaseKind::ContentV1, "my_room");
    const VxEndpoints endpoints;
    tolvane::net::CommonValues common;
    common.time = 1700000000;
    const ParamList items{{QStringLiteral("token"), QStringLiteral("880001_13_abc_3_7")},
                          {QStringLiteral("biz_type"), QStringLiteral("13")}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(tolvane::net::prepareOperation(row, items, common, endpoints, 0));
    }
}

void BM_PrepareByHand(benchmark::State& state) {
    const VxEndpoints endpoints;
    for (auto _ : state) {
        ParamList groupA;
        ParamList groupB{{QStringLiteral("aid"), QStringLiteral("vxtool")},
                         {QStringLiteral("time"), QString::number(1700000000)}};
        const ParamList groupC{{QStringLiteral("token"), QStringLiteral("880001_13_abc_3_7")},
                               {QStringLiteral("biz_type"), QStringLiteral("13")}};
        tolvane::net::signByKind(2, 0, QStringLiteral("my_room"), groupA, groupB, groupC);
        benchmark::DoNotOptimize(endpoints.composeUrl(2, 0, QStringLiteral("my_room")));
        benchmark::DoNotOptimize(groupB);
    }
}

BENCHMARK(BM_RoomStateThroughRunner)->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_RoomStateHandWritten)->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_PrepareThroughRow)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PrepareByHand)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    return tolvane::bench::runWithFixture(argc, argv, fixture);
}
