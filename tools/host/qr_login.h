#pragma once

#include <QStringList>
#include <QTextStream>
#include <cstdint>
#include <functional>
#include <string>

#include "tolvane/i_liveencoder_net_service.h"

class PrintingObserver;

// Results of loginByQRCode while the anchor has not finished in the app, as the platform
// reports them (the module passes the pending ones through).
namespace qr_results {
constexpr int32_t kWaiting = 233;     // nobody scanned the code yet
constexpr int32_t kScanned = 130019;  // scanned, not confirmed in the app yet
constexpr int32_t kExpired = 130020;  // the code ran out; a new one is needed
constexpr int32_t kInvalid = 225;     // the platform no longer knows the code
constexpr int32_t kNoAnswer = 210;    // this poll got no answer; the next may
}  // namespace qr_results

// How one QR login is shown and driven.
struct QrLoginOptions {
    QString pngPath;  // the code is also written here as an image; empty: not written
    bool ansiColours = false;
    int pollIntervalMs = 1000;
    // Printed below the code: how to play the phone, given the code; empty prints nothing.
    std::function<QString(const std::string& code)> confirmHint;
    // Called after every poll that did not end the login; the demo plays the phone here.
    std::function<void(const std::string& code, int attempt, int32_t result)> afterPoll;
};

// Asks for a QR code, draws it, polls loginByQRCode until the login succeeds, the code expires
// or a poll is refused, printing each state the platform reports once. Returns 0 when logged
// in, else the code that ended it.
int32_t runQrLogin(ILiveencoderNetService& service, QTextStream& out,
                   const QrLoginOptions& options);

// `tolvane-host qr-login [--sim] [--png PATH]`; the PNG goes beside the module's logs unless
// PATH is given. Returns the exit code.
int runQrLoginCommand(CreateNetServiceFunction create, PrintingObserver& observer, QStringList args,
                      QTextStream& out, QTextStream& err);
