#include <gtest/gtest.h>

#include "passport_reply.h"

namespace {

using halyard::readLoginReply;
using halyard::readQrCodeReply;

TEST(PassportReply, LoginVerdicts) {
    struct Case {
        const char* body;
        int httpStatus;
        int code;
        const char* message;
        const char* uid;        // filled only on success
        const char* hidePhone;  // filled only on a remote-login request
    };
    const Case cases[] = {
        {R"({"error":0,"data":{"long_token":"L1","short_token":{"uid":"12345","client_type":2,
            "create_time":"1700000000","expire_in":7200,"long_token_id":77,"short_token":"a1b2c3",
            "biz_type":1}}})",
         200, 0, "", "12345", ""},
        {R"({"error":603,"data":"wrong password"})", 200, 603, "wrong password", "", ""},
        {R"({"error":130014,"data":"confirm by sms","ext":{"isForeignTel":0,
            "hidePhone":"138****0000","code":"rl-1"}})",
         200, 130014, "confirm by sms", "", "138****0000"},
        {R"({"error":9,"msg":"use msg key"})", 200, 9, "use msg key", "", ""},
        {"<html>bad gateway</html>", 502, 502, "<html>bad gateway</html>", "", ""},
        {"not json", 200, halyard::kMalformedReply, "not json", "", ""},
        {R"({"error":"0"})", 200, halyard::kMalformedReply, R"({"error":"0"})", "", ""},
    };
    for (const Case& c : cases) {
        LoginInfo info;
        RemoteLoginInfo remote;
        const auto verdict = readLoginReply(QByteArray(c.body), c.httpStatus, info, remote);
        EXPECT_EQ(verdict.errorCode, c.code) << c.body;
        EXPECT_EQ(verdict.message.toStdString(), c.message) << c.body;
        EXPECT_EQ(info.uid.toStdString(), c.uid) << c.body;
        EXPECT_EQ(remote.hidePhone.toStdString(), c.hidePhone) << c.body;
    }
}

TEST(PassportReply, LoginRecordFieldsAcceptNumbersAndTexts) {
    LoginInfo info;
    RemoteLoginInfo remote;
    readLoginReply(R"({"error":0,"data":{"long_token":"L","short_token":{"uid":987,
        "client_type":"3","create_time":1700000001,"expire_in":"60","long_token_id":"5",
        "short_token":"s","biz_type":13}}})",
                   200, info, remote);
    EXPECT_EQ(info.longToken.toStdString(), "L");
    EXPECT_EQ(info.uid.toStdString(), "987");
    EXPECT_EQ(info.clientType, 3);
    EXPECT_EQ(info.createTime.toStdString(), "1700000001");
    EXPECT_EQ(info.expireIn, 60);
    EXPECT_EQ(info.longTokenId, 5);
    EXPECT_EQ(info.shortToken.toStdString(), "s");
    EXPECT_EQ(info.bizType, 13);
}

TEST(PassportReply, QrCode) {
    QRcodeLoginInfo qr;
    const auto verdict = readQrCodeReply(
        R"({"error":0,"data":{"code":"q-1","url":"https://passport.tolvane.example/scan?q-1","expire":120}})",
        200, qr);
    EXPECT_EQ(verdict.errorCode, 0);
    EXPECT_EQ(qr.code.toStdString(), "q-1");
    EXPECT_EQ(qr.expireSeconds, 120);

    QRcodeLoginInfo untouched;
    untouched.code = "keep";
    EXPECT_EQ(readQrCodeReply(R"({"error":603,"data":"no"})", 200, untouched).errorCode, 603);
    EXPECT_EQ(untouched.code.toStdString(), "keep");
}

}  // namespace
