#include "platform/sim_qr_control.h"

#include <httplib.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <chrono>
#include <cstdio>
#include <thread>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_passport_service.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace {

using QrState = SimPassportState::QrState;

SimReply stateReply(const std::string& code, QrState state, QrState wanted) {
    if (state == QrState::Unknown) {
        return errorReply(passport_codes::kUnknownQrCode, QStringLiteral("unknown QR code"));
    }
    const QString name = QString::fromLatin1(SimPassportState::qrStateName(state));
    if (state != wanted) {
        return errorReply(passport_codes::kQrWrongState,
                          QStringLiteral("the QR code is %1").arg(name));
    }
    return okReply(QJsonObject{{"code", QString::fromStdString(code)}, {"state", name}});
}

// The time a person needs between scanning and tapping "confirm", so that a poll sees the scan.
constexpr auto kPhoneDelay = std::chrono::milliseconds(1500);

// One control request; prints the state reached, or the refusal. True when it was reached.
bool sendControl(httplib::Client& client, const std::string& action,
                 const httplib::Params& params) {
    const httplib::Result result = action == "state"
                                       ? client.Get("/sim/qr/state", params, httplib::Headers())
                                       : client.Post("/sim/qr/" + action, params);
    if (!result) {
        std::fprintf(stderr, "tolvane-sim qr: no answer from the simulator (%s)\n",
                     httplib::to_string(result.error()).c_str());
        return false;
    }
    const QJsonObject reply =
        QJsonDocument::fromJson(QByteArray::fromStdString(result->body)).object();
    const int code = reply.value(QStringLiteral("error")).toInt(-1);
    const QJsonValue data = reply.value(QStringLiteral("data"));
    if (code != 0) {
        std::fprintf(stderr, "tolvane-sim qr %s: refused %d: %s\n", action.c_str(), code,
                     data.toString().toUtf8().constData());
        return false;
    }
    std::printf("%s\n", data.toObject().value(QStringLiteral("state")).toString().toUtf8().data());
    std::fflush(stdout);
    return true;
}

}  // namespace

void addQrControlRoutes(SimHttpServer& server, SimPlatformState& state) {
    SimPassportState* passport = &state.passport();
    auto add = [&server](const char* method, const char* path, SimHandler handler) {
        server.routes().add({method, SimAddressTable::None, -1, path, std::string(),
                             SimSignRule::None, std::move(handler)});
    };
    add("POST", "/sim/qr/scan", [passport](const SimRequest& r) {
        const std::string code = r.param("code");
        const std::string account = r.param("account").empty() ? "anchor" : r.param("account");
        return stateReply(code, passport->scanQr(code, account), QrState::Scanned);
    });
    add("POST", "/sim/qr/confirm", [passport](const SimRequest& r) {
        const std::string code = r.param("code");
        return stateReply(code, passport->confirmQr(code), QrState::Confirmed);
    });
    add("POST", "/sim/qr/expire", [passport](const SimRequest& r) {
        const std::string code = r.param("code");
        return stateReply(code, passport->expireQr(code), QrState::Expired);
    });
    add("GET", "/sim/qr/state", [passport](const SimRequest& r) {
        const std::string code = r.param("code");
        const QrState state = passport->qrState(code);
        return stateReply(code, state, state);
    });
}

int runQrCommand(const std::vector<std::string>& args) {
    const std::string action = args.size() >= 3 ? args[0] : std::string();
    if (action != "scan" && action != "confirm" && action != "expire" && action != "state") {
        std::fprintf(stderr,
                     "usage: tolvane-sim qr scan|confirm|expire|state ORIGIN CODE "
                     "[ACCOUNT]\n");
        return 2;
    }
    httplib::Client client(args[1]);
    client.set_connection_timeout(std::chrono::seconds(3));
    client.set_read_timeout(std::chrono::seconds(3));
    // The simulator's own certificate authority is not in any trust store.
    client.enable_server_certificate_verification(false);
    httplib::Params params{{"code", args[2]}};
    if (args.size() >= 4) {
        params.emplace("account", args[3]);
    }
    if (action != "confirm") {
        return sendControl(client, action, params) ? 0 : 1;
    }
    const httplib::Result current = client.Get("/sim/qr/state", params, httplib::Headers());
    const bool unscanned = current && (current->body.find("\"issued\"") != std::string::npos ||
                                       current->body.find("\"waiting\"") != std::string::npos);
    if (unscanned) {
        if (!sendControl(client, "scan", params)) {
            return 1;
        }
        std::this_thread::sleep_for(kPhoneDelay);
    }
    return sendControl(client, "confirm", params) ? 0 : 1;
}

}  // namespace tolvane::sim
