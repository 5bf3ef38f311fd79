// barrage_soak MINUTES [RATE] [KILL_SECONDS]: the barrage client against two simulator
// servers that generate RATE messages a second, where the server the client is on is killed
// (listener closed, connections dropped) every KILL_SECONDS. Checks that every reconnect
// lands on the other server within 1.0-1.2 s, that no sequence number is skipped while
// connected, and that resident memory stays within 5 % after the warm-up; reports CPU time
// per message. Exits 1 when a check failed. Run through scripts/soak.sh.
#include <sys/resource.h>
#include <QCoreApplication>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "barrage/barrage_server.h"
#include "barrage/vx_room_client.h"
#include "tolvane/i_room_listener.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

long residentKb() {
    std::ifstream status("/proc/self/status");
    std::string key;
    long value = 0;
    while (status >> key) {
        if (key == "VmRSS:") {
            status >> value;
            return value;
        }
        status.ignore(1 << 12, '\n');
    }
    return 0;
}

double processCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double threadCpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Runs on the message library's thread: counts messages and checks their sequence numbers,
// which each server numbers without a gap for the one connection it has.
class SoakListener : public IRoomListener {
public:
    std::atomic<int64_t> messages{0};
    std::atomic<int64_t> lost{0};
    std::atomic<int64_t> reordered{0};
    std::atomic<int> logins{0};
    std::atomic<double> ioThreadCpu{0};

    int32_t onRoomStatus(int32_t) override { return 0; }
    int32_t onMemberInfoValue(int32_t) override { return 0; }
    int32_t onFansBrand(const char*) override { return 0; }
    int32_t onKeepAliveFirst(int32_t) override { return 0; }
    int32_t onKeepAliveSecond(int32_t) override { return 0; }
    int32_t onHostText(const char*) override { return 0; }
    int32_t onShowEnd(int32_t, int32_t) override { return 0; }
    int32_t onNoticeValue(int32_t) override { return 0; }
    int32_t onBarrageMessage(const BarrageMessage* message) override {
        const int32_t seq = message->headerAt0;
        if (message->typeName == "loginres") {
            // A new connection: its server's numbering is the one to follow from here.
            ++logins;
        } else if (seq > expected_) {
            lost += seq - expected_;
        } else if (seq < expected_) {
            ++reordered;
        }
        expected_ = seq + 1;
        if (++messages % 1024 == 0) {
            ioThreadCpu = threadCpuSeconds();
        }
        return 0;
    }

private:
    int32_t expected_ = 0;  // library thread only
};

struct Options {
    double minutes = 10;
    int rate = 5000;
    int killSeconds = 30;
};

bool parseOptions(int argc, char** argv, Options& options) {
    if (argc < 2) {
        return false;
    }
    options.minutes = std::atof(argv[1]);
    if (argc > 2) {
        options.rate = std::atoi(argv[2]);
    }
    if (argc > 3) {
        options.killSeconds = std::atoi(argv[3]);
    }
    return options.minutes > 0 && options.rate > 0 && options.killSeconds > 1;
}

void spin(int ms) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, ms);
    QThread::msleep(static_cast<unsigned long>(ms));
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: barrage_soak MINUTES [RATE] [KILL_SECONDS]\n");
        return 2;
    }
    QCoreApplication app(argc, argv);
    // The client's logs go to a folder of their own that goes away at the end.
    QTemporaryDir dir;
    qputenv("TMPDIR", dir.path().toLocal8Bit());
    qputenv("TOLVANE_DEFAULT_DATA", (dir.path() + "/default.data").toLocal8Bit());

    sim::BarrageServer servers[2];
    for (sim::BarrageServer& server : servers) {
        server.setGeneratorRate(options.rate);
    }
    SoakListener listener;
    VxRoomClient client(nullptr, &listener);
    RoomLoginParams params;
    params.roomId = 4242;
    for (const sim::BarrageServer& server : servers) {
        params.servers.push_back({sim::BarrageServer::host(), server.port()});
    }
    client.setLoginParams(params);

    const Clock::time_point start = Clock::now();
    const double runSeconds = options.minutes * 60;
    const double warmUpSeconds = std::min(60.0, runSeconds / 5);
    client.login();
    while (listener.logins.load() == 0 && secondsSince(start) < 10) {
        spin(5);
    }
    if (listener.logins.load() == 0) {
        std::printf("FAIL: no login within 10 s\n");
        return 1;
    }

    int current = 0;  // the first login goes to the first server of the list
    int kills = 0;
    int badReconnects = 0;
    double slowest = 0;
    double fastest = 1e9;
    long baselineKb = 0;
    long minKb = 0;
    long maxKb = 0;
    double cpuAtWarmUp = 0;
    int64_t messagesAtWarmUp = 0;
    double ioCpuAtWarmUp = 0;
    double nextKill = options.killSeconds;
    double nextSample = 5;
    bool failed = false;

    while (secondsSince(start) < runSeconds) {
        spin(5);
        const double now = secondsSince(start);
        if (now >= nextSample) {
            nextSample += 5;
            const long kb = residentKb();
            if (baselineKb == 0 && now >= warmUpSeconds) {
                baselineKb = minKb = maxKb = kb;
                cpuAtWarmUp = processCpuSeconds();
                messagesAtWarmUp = listener.messages.load();
                ioCpuAtWarmUp = listener.ioThreadCpu.load();
            } else if (baselineKb != 0) {
                minKb = std::min(minKb, kb);
                maxKb = std::max(maxKb, kb);
            }
        }
        if (now < nextKill) {
            continue;
        }
        nextKill += options.killSeconds;
        sim::BarrageServer& killed = servers[current];
        sim::BarrageServer& next = servers[1 - current];
        const int loginsBefore = listener.logins.load();
        killed.stopListening();
        const Clock::time_point killedAt = Clock::now();
        killed.disconnectAll();
        ++kills;
        while (listener.logins.load() == loginsBefore && secondsSince(killedAt) < 5) {
            spin(1);
        }
        const double delay = secondsSince(killedAt);
        const auto records = next.connections();
        const bool onNext = listener.logins.load() > loginsBefore && !records.empty() &&
                            records.back().open && records.back().loggedIn;
        const bool inTime = delay >= 1.0 && delay <= 1.2;
        slowest = std::max(slowest, delay);
        fastest = std::min(fastest, delay);
        if (!onNext || !inTime) {
            ++badReconnects;
        }
        std::printf("%7.1f s  kill %d: server %d down, reconnected to server %d in %.3f s%s\n", now,
                    kills, current, 1 - current, delay, onNext && inTime ? "" : "  <-- FAIL");
        std::fflush(stdout);
        killed.resumeListening();
        current = 1 - current;
    }

    const double elapsed = secondsSince(start);
    const int64_t messages = listener.messages.load();
    const double cpu = processCpuSeconds() - cpuAtWarmUp;
    const double ioCpu = listener.ioThreadCpu.load() - ioCpuAtWarmUp;
    const int64_t measured = messages - messagesAtWarmUp;
    client.logout();

    const double drift =
        baselineKb > 0 ? std::max(maxKb - baselineKb, baselineKb - minKb) * 100.0 / baselineKb : 0;
    failed = badReconnects > 0 || listener.lost.load() > 0 || listener.reordered.load() > 0 ||
             baselineKb == 0 || drift > 5.0;
    std::printf("\nran %.0f s at %d msgs/s, killed every %d s\n", elapsed, options.rate,
                options.killSeconds);
    std::printf("messages received   %lld (%.0f/s)\n", static_cast<long long>(messages),
                messages / elapsed);
    std::printf(
        "kills               %d, reconnects outside 1.0-1.2 s or not on the next "
        "server: %d (fastest %.3f s, slowest %.3f s)\n",
        kills, badReconnects, kills > 0 ? fastest : 0.0, slowest);
    std::printf("sequence gaps       %lld messages lost, %lld out of order\n",
                static_cast<long long>(listener.lost.load()),
                static_cast<long long>(listener.reordered.load()));
    std::printf("resident memory     %ld kB after %.0f s warm-up, then %ld-%ld kB (%.1f %%)\n",
                baselineKb, warmUpSeconds, minKb, maxKb, drift);
    if (measured > 0) {
        std::printf(
            "CPU per message     %.2f us process (client and both servers), %.2f us the "
            "client's receive thread\n",
            cpu * 1e6 / measured, ioCpu * 1e6 / measured);
    }
    std::printf("%s\n", failed ? "SOAK FAILED" : "SOAK PASSED");
    return failed ? 1 : 0;
}
