#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <string>
#include <vector>

#include "platform/sim_qr_control.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using QrState = tolvane::sim::SimPassportState::QrState;

class QrLogin : public SimServiceTest {
protected:
    // A fresh code from the module, as a host gets it: the URL, then the code, then its lifetime.
    std::string askForCode() {
        std::string url, code;
        int32_t expire = 0;
        EXPECT_EQ(service().getQRCodeURL(url, code, expire), 0);
        EXPECT_EQ(url, "https://passport.tolvane.example/scan?code=" + code);
        EXPECT_EQ(expire, 120);
        return code;
    }
    int32_t poll(const std::string& code) {
        longToken.clear();
        errorMessage.clear();
        return service().loginByQRCode(code, longToken, errorMessage);
    }

    std::string longToken;
    std::string errorMessage;
};

TEST_F(QrLogin, StateWalkEndsInALoggedInSession) {
    const std::string code = askForCode();
    auto& phone = platform().passport();
    const struct {
        const char* name;
        std::function<void()> act;
        int32_t expected;
        const char* message;
    } steps[] = {
        {"nobody scanned", [] {}, 233, "等待扫码"},
        {"scanned", [&] { phone.scanQr(code, "anchor"); }, 130019, "已扫码，请在手机上确认登录"},
        {"confirmed", [&] { phone.confirmQr(code); }, 0, ""},
        {"used up", [] {}, 225, "二维码已失效"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        step.act();
        EXPECT_EQ(poll(code), step.expected);
        if (step.expected != 0) {
            EXPECT_EQ(errorMessage, step.message);
            EXPECT_TRUE(longToken.empty());
        } else {
            EXPECT_FALSE(longToken.empty());
            EXPECT_STREQ(service().getNickname(), "Lantern");
            EXPECT_TRUE(platform().sessionByToken(token()).has_value());
        }
    }
    EXPECT_TRUE(
        mainLogHas(QString::fromUtf8("error Url: lapi/passport/scan/auth, errorCode: "
                                     "130019,  errorMsg: 已扫码，请在手机上确认登录")));
    // A later refusal leaves the session of the confirmed login alone.
    EXPECT_NE(token(), "-1_0__0_0");
}

TEST_F(QrLogin, ExpiredCodesAreRefusedAndTheCommandConfirmsForAnyAccount) {
    const std::string origin = sim().environment().origin();
    const std::string byHand = askForCode();
    EXPECT_EQ(tolvane::sim::runQrCommand({"expire", origin, byHand}), 0);
    EXPECT_EQ(poll(byHand), 130020);
    EXPECT_EQ(errorMessage, "二维码已过期，请刷新");
    EXPECT_EQ(tolvane::sim::runQrCommand({"confirm", origin, byHand}), 1);
    EXPECT_EQ(tolvane::sim::runQrCommand({"scan", origin, "no-such-code"}), 1);

    const std::string byClock = askForCode();
    auto& phone = platform().passport();
    phone.scanQr(byClock, "anchor");
    phone.advanceSeconds(phone.qrLifetimeSeconds());
    EXPECT_EQ(phone.confirmQr(byClock), QrState::Expired);
    EXPECT_EQ(poll(byClock), 130020);
    EXPECT_EQ(token(), "-1_0__0_0");

    // The command scans and confirms for any account.
    const std::string code = askForCode();
    EXPECT_EQ(poll(code), 233);
    EXPECT_EQ(tolvane::sim::runQrCommand({"confirm", origin, code, "traveller"}), 0);
    EXPECT_EQ(platform().passport().qrState(code), QrState::Confirmed);
    EXPECT_EQ(poll(code), 0) << errorMessage;
    // The QR login needs no SMS confirmation: the app on the phone already vouched for it.
    EXPECT_STREQ(service().getNickname(), "Wayfarer");
}

TEST_F(QrLogin, RefusedCodeRequestIsLogged) {
    sim().http().setFault("/scan/code",
                          tolvane::sim::SimFault::httpStatus(200, R"({"error":603,"data":"no"})"));
    std::string url = "u", code = "c";
    int32_t expire = 7;
    EXPECT_EQ(service().getQRCodeURL(url, code, expire), 214);
    EXPECT_TRUE(mainLogHas(QStringLiteral("error Url: scan/code, errorCode: 603")));
    EXPECT_EQ(url + code + std::to_string(expire), "uc7");
}

// Reads the host's output until a line matches, or the host ends or the time runs out.
QString readUntil(QProcess& host, QString& seen, const QRegularExpression& pattern) {
    for (int i = 0; i < 100; ++i) {
        const QRegularExpressionMatch match = pattern.match(seen);
        if (match.hasMatch()) {
            return match.captured(1);
        }
        if (!host.waitForReadyRead(200) && host.state() == QProcess::NotRunning) {
            break;
        }
        seen += QString::fromUtf8(host.readAllStandardOutput());
    }
    return QString();
}

// What a person does: runs qr-login, scans the drawn code, and runs the printed command.
TEST(QrLoginHost, PrintedCommandLogsInAndTheImageDecodesToTheCode) {
    IsolatedWorkspace workspace;
    QProcess host;
    host.start(QStringLiteral(TOLVANE_HOST_PATH),
               {QStringLiteral("qr-login"), QStringLiteral("--sim")});
    ASSERT_TRUE(host.waitForStarted(5000));
    QString seen;
    const QString url = readUntil(host, seen, QRegularExpression("app: (\\S+)\\n"));
    // The image lies beside the module's logs, inside the temporary location.
    const QString png = readUntil(host, seen, QRegularExpression("image: (\\S+)\\n"));
    EXPECT_TRUE(png.startsWith(workspace.path() + QLatin1Char('/'))) << png.toStdString();
    EXPECT_FALSE(
        QDir(QFileInfo(png).path()).entryList({QStringLiteral("*_tolvane.log")}).isEmpty());
    const QString command =
        readUntil(host, seen, QRegularExpression("\\n  (\\S+ qr confirm .+)\\n"));
    ASSERT_FALSE(command.isEmpty()) << seen.toStdString();
    // A person scans once the code is on screen and the host has begun to ask.
    ASSERT_FALSE(readUntil(host, seen, QRegularExpression("(waiting for a scan)")).isEmpty());
    EXPECT_TRUE(command.startsWith(QStringLiteral(TOLVANE_HOST_PATH).section('/', 0, -2)));

    std::vector<std::string> args;
    for (const QString& word : command.split(' ').mid(2)) {
        args.push_back(word.toStdString());
    }
    EXPECT_EQ(tolvane::sim::runQrCommand(args), 0);
    ASSERT_TRUE(host.waitForFinished(20000));
    seen += QString::fromUtf8(host.readAllStandardOutput());
    EXPECT_EQ(host.exitCode(), 0) << seen.toStdString();
    EXPECT_TRUE(seen.contains(QStringLiteral("logged in as Lantern (uid 10001)")))
        << seen.toStdString();

    QProcess decoder;
    decoder.start(QStringLiteral("zbarimg"), {QStringLiteral("--raw"), QStringLiteral("-q"), png});
    ASSERT_TRUE(decoder.waitForFinished(20000)) << "zbarimg (zbar-tools) is needed";
    EXPECT_EQ(QString::fromUtf8(decoder.readAllStandardOutput()).trimmed(), url);
}

}  // namespace
