// tolvane-sim: the whole simulated platform as a process of its own (web services and barrage
// servers), for trying a host or a browser against it, optionally behind a slow line or
// replaying a streamer's barrage log. Prints where it serves and the default.data that points a
// module at it, then serves until SIGINT or SIGTERM.
// "tolvane-sim qr …" instead plays the phone app against a running simulator's QR login.
#include <pthread.h>

#include <QDir>
#include <QTemporaryDir>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "barrage/barrage_server.h"
#include "platform/sim_platform.h"
#include "platform/sim_qr_control.h"
#include "relay/sim_relay.h"
#include "replay/barrage_replay.h"
#include "replay/msg_log_lines.h"

namespace {

void printUsage() {
    std::fprintf(
        stderr,
        "usage: tolvane-sim [--port N] [--https] [--env N] [--data-dir DIR]\n"
        "                   [--barrage-servers N] [--barrage-rate N]\n"
        "                   [--latency MS] [--bandwidth KBPS] [--replay FILE [--speed X]]\n"
        "       tolvane-sim qr scan|confirm|expire|state ORIGIN CODE [ACCOUNT]\n");
}

bool parseNumber(const char* text, int& out, long limit = 65535) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value < 0 || value > limit) {
        return false;
    }
    out = static_cast<int>(value);
    return true;
}

bool parseSpeed(const char* text, double& out) {
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (end == text || *end != '\0' || !(value > 0) || value > 1e6) {
        return false;
    }
    out = value;
    return true;
}

struct Arguments {
    tolvane::sim::SimEnvironment::Options options;
    QString dataDir;
    int barrageServers = 1;
    // A few messages a second, so that a host sees its barrage move without flooding a log;
    // none beside a replay unless asked for.
    int barrageRate = 5;
    bool rateGiven = false;
    std::string replayFile;
    double speed = 1.0;
};

bool parseArguments(int argc, char** argv, Arguments& out) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--https") {
            out.options.https = true;
        } else if (arg == "--port" && hasValue && parseNumber(argv[i + 1], out.options.port)) {
            ++i;
        } else if (arg == "--env" && hasValue &&
                   parseNumber(argv[i + 1], out.options.environment)) {
            ++i;
        } else if (arg == "--data-dir" && hasValue) {
            out.dataDir = QString::fromLocal8Bit(argv[++i]);
        } else if (arg == "--barrage-servers" && hasValue &&
                   parseNumber(argv[i + 1], out.barrageServers)) {
            ++i;
        } else if (arg == "--barrage-rate" && hasValue &&
                   parseNumber(argv[i + 1], out.barrageRate)) {
            out.rateGiven = true;
            ++i;
        } else if (arg == "--latency" && hasValue &&
                   parseNumber(argv[i + 1], out.options.link.latencyMs, 60000)) {
            ++i;
        } else if (arg == "--bandwidth" && hasValue &&
                   parseNumber(argv[i + 1], out.options.link.bandwidthKbps, 100000000)) {
            ++i;
        } else if (arg == "--replay" && hasValue) {
            out.replayFile = argv[++i];
        } else if (arg == "--speed" && hasValue && parseSpeed(argv[i + 1], out.speed)) {
            ++i;
        } else {
            return false;
        }
    }
    if (!out.replayFile.empty() && !out.rateGiven) {
        out.barrageRate = 0;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "qr") == 0) {
        return tolvane::sim::runQrCommand(std::vector<std::string>(argv + 2, argv + argc));
    }
    Arguments args;
    if (!parseArguments(argc, argv, args)) {
        printUsage();
        return 2;
    }
    std::vector<tolvane::sim::ReplayStep> replaySteps;
    if (!args.replayFile.empty()) {
        auto steps = tolvane::sim::readReplay(args.replayFile);
        if (!steps) {
            std::fprintf(stderr, "tolvane-sim: cannot read %s\n", args.replayFile.c_str());
            return 1;
        }
        replaySteps = std::move(*steps);
    }

    // Blocked before any thread starts, so only sigwait below ever sees these stopSignals.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    // Without --data-dir the default.data lives as long as the simulator does.
    QTemporaryDir scratch;
    const QString folder = args.dataDir.isEmpty() ? scratch.path() : args.dataDir;
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "tolvane-sim: cannot create %s\n", qPrintable(folder));
        return 1;
    }
    tolvane::sim::SimPlatform platform(folder, args.options);
    if (!platform.start()) {
        std::fprintf(stderr, "tolvane-sim: cannot listen on 127.0.0.1:%d or write %s\n",
                     args.options.port, qPrintable(platform.environment().defaultDataPath()));
        return 1;
    }
    if (!platform.startBarrageServers(args.barrageServers)) {
        std::fprintf(stderr, "tolvane-sim: cannot start the barrage servers\n");
        return 1;
    }
    std::vector<::sim::BarrageServer*> servers;
    for (int i = 0; i < platform.barrageServerCount(); ++i) {
        platform.barrageServer(i).setGeneratorRate(args.barrageRate);
        servers.push_back(&platform.barrageServer(i));
    }
    // Declared after the platform, so it stops before the servers it plays through.
    std::unique_ptr<tolvane::sim::BarrageReplay> replay;
    if (!args.replayFile.empty()) {
        replay = std::make_unique<tolvane::sim::BarrageReplay>(std::move(replaySteps), args.speed);
        replay->attach(servers);
    }

    std::printf("%s\n", platform.environment().origin().c_str());
    if (args.options.https) {
        std::printf("ca: %s\n", platform.environment().caFile().c_str());
    }
    for (int i = 0; i < platform.barrageServerCount(); ++i) {
        std::printf("barrage: %s:%d\n", ::sim::BarrageServer::host(),
                    static_cast<int>(platform.barrageRelay(i) != nullptr
                                         ? platform.barrageRelay(i)->port()
                                         : platform.barrageServer(i).port()));
    }
    const tolvane::sim::SimLinkShape& link = args.options.link;
    if (link.relays()) {
        std::printf("relay: %d ms round trip, %s\n", link.latencyMs,
                    link.bandwidthKbps > 0
                        ? (std::to_string(link.bandwidthKbps) + " kbit/s each way").c_str()
                        : "no bandwidth cap");
    }
    if (replay) {
        std::printf("replay: %zu messages at %g times the recorded pace, from the first login\n",
                    replay->size(), args.speed);
    }
    std::printf("default.data: %s\n", qPrintable(platform.environment().defaultDataPath()));
    std::fflush(stdout);

    int received = 0;
    sigwait(&stopSignals, &received);
    if (replay) {
        replay->stop();
    }
    if (link.relays()) {
        int relayed = platform.environment().relay()->connections();
        for (int i = 0; i < platform.barrageServerCount(); ++i) {
            relayed += platform.barrageRelay(i)->connections();
        }
        std::printf("relayed connections: %d\n", relayed);
    }
    platform.stop();
    return 0;
}
