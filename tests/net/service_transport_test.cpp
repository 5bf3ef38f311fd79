#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include "service/log_writer.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using ServiceTransport = SimServiceTest;

QJsonObject replyData(const QByteArray& reply) {
    return QJsonDocument::fromJson(reply).object().value("data").toObject();
}

TEST_F(ServiceTransport, DescribedRequestsAreSignedAsTheServerExpects) {
    struct Case {
        int kind;
        const char* path;
    };
    // Every kind is checked against the request client itself; these show the service's wiring.
    const Case cases[] = {{2, "sim/echo/query"},
                          {6, "sim/echo/mobile3"},
                          {10, "sim/echo/mobile2"},
                          {8, "sim/echo/none"}};
    for (const Case& c : cases) {
        for (const bool post : {false, true}) {
            RequestDescriptor request;
            request.kind = c.kind;
            request.path = c.path;
            request.groupB = {{"room_id", "880001"}, {"note", "弹幕 & more=yes"}};
            if (post) {
                request.groupC = {{"token", "t"}, {"title", "晚上好 100%"}};
            }
            request.timeoutMs = 5000;
            QByteArray reply;
            const bool ok =
                post ? service().requestPost(reply, request) : service().requestGet(reply, request);
            ASSERT_TRUE(ok) << c.kind << " " << reply.toStdString();
            const QJsonObject data = replyData(reply);
            EXPECT_TRUE(data.value("auth_ok").toBool()) << c.kind << " " << reply.toStdString();
            EXPECT_EQ(data.value("query").toObject().value("note").toString(),
                      QString::fromUtf8("弹幕 & more=yes"))
                << c.kind;
            if (post) {
                EXPECT_EQ(data.value("form").toObject().value("title").toString(),
                          QString::fromUtf8("晚上好 100%"));
            }
        }
    }
}

TEST_F(ServiceTransport, MobileKindsCarryTheCommonValuesAsHeaders) {
    std::string error, token;
    ASSERT_EQ(service().login("anchor", "secret123", error, token), 0) << error;
    std::string sessionToken;
    service().getToken(sessionToken);
    for (const int kind : {6, 10}) {
        RequestDescriptor request;
        request.kind = kind;
        request.path = kind == 6 ? "sim/echo/mobile3" : "sim/echo/mobile2";
        QByteArray reply;
        ASSERT_TRUE(service().requestPost(reply, request));
        const QJsonObject headers = replyData(reply).value("headers").toObject();
        QJsonObject lower;
        for (auto it = headers.begin(); it != headers.end(); ++it) {
            lower.insert(it.key().toLower(), it.value());
        }
        EXPECT_EQ(lower.value("aid").toString(), "vxtool") << kind;
        EXPECT_EQ(lower.value("token").toString().toStdString(), sessionToken) << kind;
        EXPECT_FALSE(lower.value("auth").toString().isEmpty()) << kind;
        EXPECT_FALSE(lower.value("user-device").toString().isEmpty()) << kind;
    }
}

TEST_F(ServiceTransport, HostComposedRequestsAreSentAsGiven) {
    const std::string url = sim().environment().origin() + "/sim/echo/none";
    QByteArray reply;
    ASSERT_TRUE(service().getRequest(reply, url, {{"X-Trace", "42"}}, {{"q", "a b"}}, 5000));
    EXPECT_EQ(replyData(reply).value("query").toObject().value("q").toString(), "a b");
    ASSERT_TRUE(service().postRequest(reply, url, {}, {}, {{"k", "v&w"}}, 5000));
    EXPECT_EQ(replyData(reply).value("form").toObject().value("k").toString(), "v&w");
    EXPECT_FALSE(service().getRequest(reply, sim().environment().origin() + "/sim/status/404", {},
                                      {}, 5000));
    EXPECT_EQ(QJsonDocument::fromJson(reply).object().value("error").toInt(), 404);

    service_.reset();  // the request log reaches its file every sixth line and on close
    const QStringList requestLog = readLogMessages(tolvane::log::kRequestLog);
    EXPECT_EQ(requestLog.count(QString::fromStdString("get url: " + url)), 2);
}

TEST_F(ServiceTransport, UserDeviceFollowsTheClientVersion) {
    std::string value;
    service().getUserDevice(value);
    EXPECT_EQ(value, QByteArray("00_00_00_00_FF_FF|v1.0.0.0").toBase64().toStdString());
    service().setClientVersion("AA_BB", "v9.9");
    service().getUserDevice(value);
    EXPECT_EQ(value, QByteArray("AA_BB|v9.9").toBase64().toStdString());
    RequestDescriptor request;
    request.kind = 8;
    request.path = "sim/echo/none";
    QByteArray reply;
    ASSERT_TRUE(service().requestGet(reply, request));
    EXPECT_EQ(
        replyData(reply).value("headers").toObject().value("User-Device").toString().toStdString(),
        value);
}

}  // namespace
