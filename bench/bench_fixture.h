#pragma once

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <functional>
#include <memory>

#include "platform/sim_platform.h"

namespace tolvane::bench {

// Logs and the default data file go to the benchmark's own folder, and the simulator runs in
// this process; false when it did not start.
inline bool startSimulator(const QTemporaryDir& dir, std::unique_ptr<sim::SimPlatform>& sim) {
    qputenv("TMPDIR", dir.path().toLocal8Bit());
    qputenv("TOLVANE_DEFAULT_DATA", dir.filePath(QStringLiteral("default.data")).toLocal8Bit());
    sim = std::make_unique<sim::SimPlatform>(dir.path());
    return sim->start();
}

// Runs the event loop, as a host's main loop would, until `done`; false on time-out.
inline bool runEventsUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        QThread::usleep(200);
    }
    return true;
}

// False, and the benchmark marked skipped with `why`, when the fixture did not come up.
template <typename Fixture>
bool fixtureReady(benchmark::State& state, const Fixture* fixture, const char* why) {
    if (fixture == nullptr || !fixture->ready) {
        state.SkipWithError(why);
        return false;
    }
    return true;
}

// Runs every registered benchmark against one fixture, which they reach through `slot`; the
// exit code says whether the fixture came up.
template <typename Fixture>
int runWithFixture(int argc, char** argv, Fixture*& slot) {
    QCoreApplication app(argc, argv);
    auto shared = std::make_unique<Fixture>();
    slot = shared.get();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    slot = nullptr;
    return shared->ready ? 0 : 1;
}

}  // namespace tolvane::bench
