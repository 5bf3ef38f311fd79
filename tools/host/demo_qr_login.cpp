// The demo's QR login: the code is drawn as for a person, and the simulator plays the phone
// that scans it and confirms the login.
#include "demo_road.h"
#include "platform/sim_platform.h"
#include "qr_login.h"

bool DemoRoad::showQrLogin() {
    QrLoginOptions options;
    options.pollIntervalMs = 300;  // the simulated phone is quick; no need to wait a second
    tolvane::sim::SimPassportState& phone = sim_.state().passport();
    options.afterPoll = [this, &phone](const std::string& code, int attempt, int32_t) {
        if (attempt == 1) {
            phone.scanQr(code, "anchor");
            step(QStringLiteral("the phone scans"), QStringLiteral("anchor"));
        } else if (attempt == 2) {
            phone.confirmQr(code);
            step(QStringLiteral("the phone confirms"), QStringLiteral("ok"));
        }
    };
    const int32_t result = runQrLogin(service_, out_, options);
    std::string token;
    service_.getToken(token);
    const bool loggedIn =
        check(QStringLiteral("QR login"), result, std::string(), QString::fromStdString(token));
    service_.logout();
    return loggedIn;
}
