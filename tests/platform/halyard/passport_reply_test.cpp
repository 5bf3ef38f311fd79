#include <gtest/gtest.h>

#include <QString>
#include <string>
#include <utility>

#include "passport_reply.h"

namespace {

// A record as one line, so that a row states every field it must hold.
std::string text(const LoginInfo& i) {
    return QString::asprintf("%s %s %d %s %d %d %s %d", qPrintable(i.longToken), qPrintable(i.uid),
                             i.clientType, qPrintable(i.createTime), i.expireIn, i.longTokenId,
                             qPrintable(i.shortToken), i.bizType)
        .toStdString();
}

TEST(PassportReply, LoginVerdicts) {
    struct Case {
        const char* body;
        int httpStatus;
        int code;
        const char* message;
        const char* record;     // null: left empty
        const char* hidePhone;  // filled only on a remote-login request
    };
    const Case cases[] = {
        {R"({"error":0,"data":{"long_token":"L1","short_token":{"uid":"12345","client_type":2,
            "create_time":"1700000000","expire_in":7200,"long_token_id":77,"short_token":"a1b2c3",
            "biz_type":1}}})",
         200, 0, "", "L1 12345 2 1700000000 7200 77 a1b2c3 1", ""},
        // Each field is read from a number or a text alike.
        {R"({"error":0,"data":{"long_token":"L","short_token":{"uid":987,"client_type":"3",
            "create_time":1700000001,"expire_in":"60","long_token_id":"5","short_token":"s",
            "biz_type":13}}})",
         200, 0, "", "L 987 3 1700000001 60 5 s 13", ""},
        {R"({"error":603,"data":"wrong password"})", 200, 603, "wrong password", nullptr, ""},
        {R"({"error":130014,"data":"confirm by sms","ext":{"isForeignTel":0,
            "hidePhone":"138****0000","code":"rl-1"}})",
         200, 130014, "confirm by sms", nullptr, "138****0000"},
        {R"({"error":9,"msg":"use msg key"})", 200, 9, "use msg key", nullptr, ""},
        {"<html>bad gateway</html>", 502, 502, "<html>bad gateway</html>", nullptr, ""},
        {"not json", 200, halyard::kMalformedReply, "not json", nullptr, ""},
        {R"({"error":"0"})", 200, halyard::kMalformedReply, R"({"error":"0"})", nullptr, ""},
    };
    for (const Case& c : cases) {
        LoginInfo info;
        RemoteLoginInfo remote;
        const auto verdict =
            halyard::readLoginReply(QByteArray(c.body), c.httpStatus, info, remote);
        EXPECT_EQ(verdict.errorCode, c.code) << c.body;
        EXPECT_EQ(verdict.message.toStdString(), c.message) << c.body;
        EXPECT_EQ(text(info), c.record ? c.record : text(LoginInfo())) << c.body;
        EXPECT_EQ(remote.hidePhone.toStdString(), c.hidePhone) << c.body;
    }
}

TEST(PassportReply, QrCodeOrARefusalThatLeavesTheRecord) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"error":0,"data":{"code":"q-1","url":"https://p.example/q-1","expire":120}})",
         "0 q-1 https://p.example/q-1 120"},
        {R"({"error":603,"data":"no"})", "603 keep  0"},
    };
    for (const auto& [body, expected] : cases) {
        QRcodeLoginInfo qr;
        qr.code = "keep";
        const int code = halyard::readQrCodeReply(body, 200, qr).errorCode;
        EXPECT_EQ(QString::asprintf("%d %s %s %d", code, qPrintable(qr.code), qPrintable(qr.url),
                                    qr.expireSeconds)
                      .toStdString(),
                  expected);
    }
}

}  // namespace
