// tolvane-sim: the platform simulator as a process of its own, for trying the host or a
// browser against it. Prints its origin and serves until SIGINT or SIGTERM. "tolvane-sim qr …"
// instead plays the phone app against a running simulator's QR login.
#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "http/sim_certificate_authority.h"
#include "http/sim_http_server.h"
#include "platform/sim_qr_control.h"

namespace {

void printUsage() {
    std::fprintf(stderr,
                 "usage: tolvane-sim [--port N] [--https] [--env N]\n"
                 "       tolvane-sim qr scan|confirm|expire|state ORIGIN CODE [ACCOUNT]\n");
}

bool parseNumber(const char* text, int& out) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value < 0 || value > 65535) {
        return false;
    }
    out = static_cast<int>(value);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "qr") == 0) {
        return tolvane::sim::runQrCommand(std::vector<std::string>(argv + 2, argv + argc));
    }
    int port = 0;
    int environment = 0;
    bool https = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--https") {
            https = true;
        } else if (arg == "--port" && i + 1 < argc && parseNumber(argv[i + 1], port)) {
            ++i;
        } else if (arg == "--env" && i + 1 < argc && parseNumber(argv[i + 1], environment)) {
            ++i;
        } else {
            printUsage();
            return 2;
        }
    }

    // Blocked before any thread starts, so only sigwait below ever sees these stopSignals.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    tolvane::sim::SimHttpServer server(environment);
    std::unique_ptr<tolvane::sim::SimCertificateAuthority> authority;
    bool started = false;
    if (https) {
        authority = std::make_unique<tolvane::sim::SimCertificateAuthority>();
        started = authority->isValid() && server.startHttps(authority->trustedIdentity(), port);
    } else {
        started = server.start(port);
    }
    if (!started) {
        std::fprintf(stderr, "tolvane-sim: cannot listen on 127.0.0.1:%d\n", port);
        return 1;
    }
    std::printf("%s\n", server.origin().c_str());
    if (authority) {
        std::printf("ca: %s\n", authority->caFile().c_str());
    }
    std::fflush(stdout);

    int received = 0;
    sigwait(&stopSignals, &received);
    server.stop();
    return 0;
}
