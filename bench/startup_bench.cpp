// What starting the module costs a host: CreateNetService up to the first operation the platform
// answers (a login), the release, and the resident memory the loaded module adds. The module is
// loaded from its shared library as a host loads it; the simulator runs in this process.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>
#include <chrono>
#include <memory>

#include "bench_fixture.h"
#include "tolvane/i_liveencoder_net_service.h"

namespace {

using Clock = std::chrono::steady_clock;

// Resident set size of this process, from the second field of /proc/self/statm.
double residentKiB() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> fields = statm.readAll().split(' ');
    const double pageKiB = static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024.0;
    return fields.size() > 1 ? fields.at(1).toDouble() * pageKiB : 0;
}

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

struct Fixture {
    QTemporaryDir dir;
    std::unique_ptr<tolvane::sim::SimPlatform> sim;
    QLibrary library;
    CreateNetServiceFunction create = nullptr;
    bool ready = false;
    // Resident memory before the module was loaded, after loading it, with the first service
    // logged in, and after that service was released.
    double baselineKiB = 0;
    double loadedKiB = 0;
    double firstServiceKiB = 0;
    double releasedKiB = 0;
    // The very first load, create and login, cold: what a host pays once at start.
    double loadMs = 0;
    double createMs = 0;
    double loginMs = 0;

    Fixture() {
        if (!tolvane::bench::startSimulator(dir, sim)) {
            return;
        }
        baselineKiB = residentKiB();
        const Clock::time_point start = Clock::now();
        library.setFileName(QStringLiteral(TOLVANE_LIBRARY_PATH));
        create = reinterpret_cast<CreateNetServiceFunction>(library.resolve("CreateNetService"));
        const Clock::time_point loaded = Clock::now();
        if (create == nullptr) {
            return;
        }
        loadedKiB = residentKiB();
        const Clock::time_point createStart = Clock::now();
        ILiveencoderNetService* service = create(nullptr, nullptr);
        const Clock::time_point created = Clock::now();
        ready = service != nullptr && logIn(*service);
        loadMs = milliseconds(loaded - start);
        createMs = milliseconds(created - createStart);
        loginMs = milliseconds(Clock::now() - created);
        firstServiceKiB = residentKiB();
        if (service != nullptr) {
            service->stop();
            service->release();
        }
        QCoreApplication::processEvents();
        releasedKiB = residentKiB();
    }

    static bool logIn(ILiveencoderNetService& service) {
        std::string error, longToken;
        return service.login("anchor", "secret123", error, longToken) == 0;
    }
};

Fixture* fixture = nullptr;

// Between cycles: the service's queued replies, and the simulator's request log, which keeps
// every request and would otherwise show up as the module's memory.
void settle() {
    QCoreApplication::processEvents();
    fixture->sim->http().requestLog().clear();
}

double seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

bool ready(benchmark::State& state) {
    return tolvane::bench::fixtureReady(state, fixture,
                                        "the module or the simulator did not start");
}

void BM_CreateToFirstAnswer(benchmark::State& state) {
    if (!ready(state)) {
        return;
    }
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        ILiveencoderNetService* service = fixture->create(nullptr, nullptr);
        const bool answered = Fixture::logIn(*service);
        state.SetIterationTime(seconds(Clock::now() - start));
        service->stop();
        service->release();
        settle();
        if (!answered) {
            state.SkipWithError("login failed");
            return;
        }
    }
}

void BM_CreateOnly(benchmark::State& state) {
    if (!ready(state)) {
        return;
    }
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        ILiveencoderNetService* service = fixture->create(nullptr, nullptr);
        state.SetIterationTime(seconds(Clock::now() - start));
        service->release();
        settle();
    }
}

void BM_Release(benchmark::State& state) {
    if (!ready(state)) {
        return;
    }
    for (auto _ : state) {
        ILiveencoderNetService* service = fixture->create(nullptr, nullptr);
        Fixture::logIn(*service);
        const Clock::time_point start = Clock::now();
        service->stop();
        service->release();
        state.SetIterationTime(seconds(Clock::now() - start));
        settle();
    }
}

// The first start is the one a host pays for in time and memory; it is measured once, in the
// fixture, cold.
void BM_ResidentMemory(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(fixture);
    }
    if (!ready(state)) {
        return;
    }
    state.counters["cold_load_ms"] = fixture->loadMs;
    state.counters["cold_create_ms"] = fixture->createMs;
    state.counters["cold_login_ms"] = fixture->loginMs;
    state.counters["load_KiB"] = fixture->loadedKiB - fixture->baselineKiB;
    state.counters["first_answer_KiB"] = fixture->firstServiceKiB - fixture->baselineKiB;
    state.counters["after_release_KiB"] = fixture->releasedKiB - fixture->baselineKiB;
    // Registered last, so this follows every create and release above: growth here is a leak.
    state.counters["after_all_cycles_KiB"] = residentKiB() - fixture->baselineKiB;
}

BENCHMARK(BM_CreateToFirstAnswer)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_CreateOnly)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_Release)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ResidentMemory)->Iterations(1);

}  // namespace

int main(int argc, char** argv) {
    return tolvane::bench::runWithFixture(argc, argv, fixture);
}
