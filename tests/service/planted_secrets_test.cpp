#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <string>
#include <vector>

#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimRoomLines;

// The text of every log file under a folder, all days and names together.
QString allLogText(const QString& folder) {
    QString text;
    QDirIterator files(folder, {"*.log"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly)) {
            text += QString::fromUtf8(file.readAll());
        }
    }
    return text;
}

// The short token is the third field of the session token text.
std::string shortTokenOf(const std::string& sessionToken) {
    const QStringList fields = QString::fromStdString(sessionToken).split('_');
    return fields.size() == 5 ? fields[2].toStdString() : std::string();
}

class PlantedSecrets : public SimServiceTest {};

// The broadcast road and every failure path that logs a request, URL or reply, full of secrets.
TEST_F(PlantedSecrets, NoneReachesALogFile) {
    ASSERT_TRUE(sim().startBarrageServers(1));
    const std::string pushKey = "880001_PlantedStream7Q?key=PlantedPushKey9Z";
    const std::string pushLine = "rtmp://push-p.tolvane.example/live/" + pushKey;
    platform().liveState().update(kAnchorRoom, [&](SimRoomLines& lines) {
        lines.main = {{5, pushLine}};
        lines.h265.clear();
    });
    std::vector<std::string> secrets = {"secret456",        "secret123",      pushKey,
                                        "PlantedPushKey9Z", "PlantedSms4417", "PlantedQr8830",
                                        "PlantedAuth2291",  "PlantedPass5502"};

    std::string error, longToken, token;
    ASSERT_EQ(service().login("traveller", "secret456", error, longToken), 228);
    bool foreign = false;
    std::string hidePhone, remoteCode;
    service().getRemoteLoginInfo(foreign, hidePhone, remoteCode);
    const std::string sms = platform().passport().issueSmsCode(remoteCode);
    ASSERT_EQ(service().remoteLogin(remoteCode, sms, longToken, error), 0) << error;
    service().getToken(token);
    secrets.insert(secrets.end(), {sms, longToken, token, shortTokenOf(token)});
    service().logout();

    std::string url, qrCode;
    int32_t expire = 0;
    ASSERT_EQ(service().getQRCodeURL(url, qrCode, expire), 0);
    platform().passport().scanQr(qrCode, "anchor");
    platform().passport().confirmQr(qrCode);
    ASSERT_EQ(service().loginByQRCode(qrCode, longToken, error), 0) << error;
    service().getToken(token);
    secrets.insert(secrets.end(), {qrCode, longToken, token, shortTokenOf(token)});
    service().logout();

    ASSERT_EQ(service().login("anchor", "secret123", error, longToken), 0) << error;
    service().getToken(token);
    secrets.insert(secrets.end(), {longToken, token, shortTokenOf(token)});
    ASSERT_EQ(service().startBarrage(), 0);
    PushAddress* main = nullptr;
    PushAddress* h265 = nullptr;
    int32_t mainCount = 0, h265Count = 0;
    ASSERT_EQ(service().get_all_rtmp_addresses(main, mainCount, h265, h265Count), 0);
    service().freeArray(main);
    service().freeArray(h265);
    main = h265 = nullptr;
    ASSERT_EQ(service().open_live_room(pushLine), 0);
    service().sendRawMessage(("type=chatmsg;txt=hi;token=" + token + ";").c_str());

    // A refused form POST writes its body; a refused reply writes itself.
    sim().http().setFault("/mgapi/livenc/anchor/getRtMpList",
                          SimFault::httpStatus(500, R"({"long_token":")" + longToken + "\"}"));
    EXPECT_NE(service().get_all_rtmp_addresses(main, mainCount, h265, h265Count), 0);
    const std::string refusal = R"({"error":603,"data":{"rtmp_send_url":"rtmp://p.example/live",)"
                                R"("rtmp_send_live":")" +
                                pushKey + R"(","token":")" + token + "\"}}";
    sim().http().setFault("/api/v1/my_room", SimFault::httpStatus(200, refusal));
    int32_t lineId = 0;
    EXPECT_NE(service().get_rtmp_address(url, lineId), 0);
    sim().http().setFault(
        "/mgapi/livenc/anchor/closeLive",
        SimFault::httpStatus(200, R"({"error":603,"data":{"code":"PlantedAuth2291"}})"));
    EXPECT_NE(service().stop_live_room(), 0);

    // Requests the host composes itself, with secrets in the URL, the query and the form.
    QByteArray reply;
    const std::string hostUrl =
        sim().environment().origin() + "/sim/status/500?token=" + token + "&longToken=" + longToken;
    EXPECT_FALSE(service().postRequest(reply, hostUrl, {}, {{"qrcode", "PlantedQr8830"}},
                                       {{"code", "PlantedSms4417"},
                                        {"auth_code", "PlantedAuth2291"},
                                        {"password", "PlantedPass5502"}},
                                       5000));
    EXPECT_FALSE(
        service().getRequest(reply, hostUrl, {}, {{"token", QString::fromStdString(token)}}, 5000));
    service().logout();
    service_.reset();  // closes php.log and msg.log

    const QString logs = allLogText(workspace_.path());
    for (const std::string& secret : secrets) {
        ASSERT_FALSE(secret.empty());
        // Whole values only: a six-digit code may well occur inside a longer number.
        const QRegularExpression whole("(?<![0-9A-Za-z])" +
                                       QRegularExpression::escape(QString::fromStdString(secret)) +
                                       "(?![0-9A-Za-z])");
        EXPECT_FALSE(whole.match(logs).hasMatch()) << "in clear: " << secret;
    }
    // The lines that used to carry the secrets were written, with the values masked.
    for (const char* expected : {"post:", "token=<masked:", R"(\"long_token\":\"<masked:)",
                                 "\"rtmp_send_live\":\"<masked:", "code=<masked:",
                                 "[sendRawMessage]: type=chatmsg;txt=hi;token=<masked:"}) {
        EXPECT_TRUE(logs.contains(expected)) << expected;
    }
}

}  // namespace
