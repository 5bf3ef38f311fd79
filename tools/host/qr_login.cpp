#include "qr_login.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <memory>

#include "platform/sim_platform.h"
#include "printing_observer.h"
#include "qr_code_image.h"
#include "slow_line_options.h"

namespace {

using namespace qr_results;

// Keeps the host's event loop turning between polls, as a host's main loop would.
void waitWithEvents(int milliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
    }
}

QString stateLine(int32_t result, const std::string& message, qint64 secondsLeft) {
    const QString text = QString::fromStdString(message);
    switch (result) {
        case kWaiting:
            return QStringLiteral("waiting for a scan (%1 s left): %2").arg(secondsLeft).arg(text);
        case kScanned:
            return QStringLiteral("scanned, waiting for the confirmation in the app: %1").arg(text);
        case kNoAnswer:
            return QStringLiteral("no answer from the platform, asking again");
        default:
            return QStringLiteral("refused %1: %2").arg(result).arg(text);
    }
}

// The module writes its logs under the temporary location, in a folder named after the host
// executable; the code's image goes there too, so that a person finds both in one place.
QString defaultPngPath() {
    const QString name = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    const int dot = name.lastIndexOf(QLatin1Char('.'));
#ifdef _WIN32
    const QString base = dot < 0 ? QString() : name.left(dot);
#else
    // A POSIX executable has no suffix: the module then names the folder after the whole name.
    const QString base = dot < 0 ? name : name.left(dot);
#endif
    return QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::TempLocation) +
                           QLatin1Char('/') + base + QStringLiteral("/loginLog/qr-login.png"));
}

}  // namespace

int32_t runQrLogin(ILiveencoderNetService& service, QTextStream& out,
                   const QrLoginOptions& options) {
    std::string url, code;
    int32_t expireSeconds = 0;
    const int32_t asked = service.getQRCodeURL(url, code, expireSeconds);
    if (asked != 0) {
        out << "getQRCodeURL failed: " << asked << Qt::endl;
        return asked;
    }
    const QrCodeImage image = QrCodeImage::encode(QString::fromStdString(url));
    if (image.isEmpty()) {
        out << "the QR code's text does not fit a QR code: " << QString::fromStdString(url)
            << Qt::endl;
        return 1;
    }
    out << image.terminalText(options.ansiColours);
    out << "scan it with the platform's app: " << QString::fromStdString(url) << Qt::endl;
    if (!options.pngPath.isEmpty()) {
        out << (image.writePng(options.pngPath) ? "image: " : "cannot write the image: ")
            << QDir::toNativeSeparators(options.pngPath) << Qt::endl;
    }
    if (options.confirmHint) {
        const QString hint = options.confirmHint(code);
        if (!hint.isEmpty()) {
            out << hint << Qt::endl;
        }
    }

    // The platform says when the code expired; the local deadline only guards against a
    // platform that never does.
    const qint64 deadline = QDateTime::currentSecsSinceEpoch() + expireSeconds + 5;
    int32_t lastShown = -1;
    for (int attempt = 1;; ++attempt) {
        std::string longToken, message;
        const int32_t result = service.loginByQRCode(code, longToken, message);
        const qint64 secondsLeft = deadline - 5 - QDateTime::currentSecsSinceEpoch();
        if (result == 0) {
            UserRecord user;
            service.getUserRecord(user);
            out << "logged in as " << QString::fromStdString(user.nickname) << " (uid "
                << QString::fromStdString(user.uid) << ")" << Qt::endl;
            return 0;
        }
        if (result == kExpired || result == kInvalid ||
            QDateTime::currentSecsSinceEpoch() > deadline) {
            out << "the QR code expired before the login was confirmed; run qr-login again "
                   "for a new one"
                << Qt::endl;
            return result == kInvalid ? kInvalid : kExpired;
        }
        if (result != kWaiting && result != kScanned && result != kNoAnswer) {
            out << stateLine(result, message, secondsLeft) << Qt::endl;
            return result;
        }
        if (result != lastShown) {
            out << stateLine(result, message, std::max<qint64>(secondsLeft, 0)) << Qt::endl;
            lastShown = result;
        }
        if (options.afterPoll) {
            options.afterPoll(code, attempt, result);
        }
        waitWithEvents(options.pollIntervalMs);
    }
}

int runQrLoginCommand(CreateNetServiceFunction create, PrintingObserver& observer, QStringList args,
                      QTextStream& out, QTextStream& err) {
    bool withSim = false;
    tolvane::sim::SimEnvironment::Options simOptions;
    QString pngPath = defaultPngPath();
    while (!args.isEmpty()) {
        const QString arg = args.takeFirst();
        if (arg == QStringLiteral("--sim") && takeSlowLine(args, simOptions)) {
            withSim = true;
        } else if (arg == QStringLiteral("--png") && !args.isEmpty()) {
            pngPath = args.takeFirst();
        } else {
            err << "usage: tolvane-host qr-login [--sim [--latency MS] [--bandwidth KBPS]] "
                   "[--png PATH]"
                << Qt::endl;
            return 2;
        }
    }
    // The simulator points TOLVANE_DEFAULT_DATA at itself before the service reads it.
    QTemporaryDir simFolder;
    std::unique_ptr<tolvane::sim::SimPlatform> sim;
    if (withSim) {
        sim = std::make_unique<tolvane::sim::SimPlatform>(simFolder.path(), simOptions);
        if (!simFolder.isValid() || !sim->start()) {
            err << "cannot start the simulator" << Qt::endl;
            return 1;
        }
    }
    ILiveencoderNetService* service = create(&observer, &observer);
    if (service == nullptr) {
        err << "CreateNetService returned null" << Qt::endl;
        return 1;
    }
    QrLoginOptions options;
    options.pngPath = pngPath;
    options.ansiColours = isatty(STDOUT_FILENO) != 0;
    if (sim) {
        const QString simTool =
            QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tolvane-sim"));
        const QString origin = QString::fromStdString(sim->environment().origin());
        options.confirmHint = [simTool, origin](const std::string& code) {
            return QStringLiteral(
                       "the simulator plays the phone; to scan and confirm, run:\n  "
                       "%1 qr confirm %2 %3")
                .arg(simTool, origin, QString::fromStdString(code));
        };
    }
    const int32_t result = runQrLogin(*service, out, options);
    service->stop();
    service->release();
    return result == 0 ? 0 : 1;
}
