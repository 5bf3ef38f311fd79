#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include "log/log_writer.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

using ServiceTransport = SimServiceTest;

QJsonObject replyData(const QByteArray& reply) {
    return QJsonDocument::fromJson(reply).object().value("data").toObject();
}

TEST_F(ServiceTransport, DescribedRequestsAreSignedAsTheServerExpects) {
    std::string error, token;
    ASSERT_EQ(service().login("anchor", "secret123", error, token), 0) << error;
    std::string sessionToken;
    service().getToken(sessionToken);
    // Every kind is checked against the request client itself; these show the service's wiring.
    const std::pair<int, const char*> cases[] = {{2, "sim/echo/query"},
                                                 {6, "sim/echo/mobile3"},
                                                 {10, "sim/echo/mobile2"},
                                                 {8, "sim/echo/none"}};
    for (const auto& [kind, path] : cases) {
        for (const bool post : {false, true}) {
            RequestDescriptor request;
            request.kind = kind;
            request.path = path;
            request.groupB = {{"room_id", "880001"}, {"note", "弹幕 & more=yes"}};
            if (post) {
                request.groupC = {{"token", "t"}, {"title", "晚上好 100%"}};
            }
            request.timeoutMs = 5000;
            QByteArray reply;
            const bool ok =
                post ? service().requestPost(reply, request) : service().requestGet(reply, request);
            ASSERT_TRUE(ok) << kind << " " << reply.toStdString();
            const QJsonObject data = replyData(reply);
            EXPECT_TRUE(data.value("auth_ok").toBool()) << kind << " " << reply.toStdString();
            EXPECT_EQ(data.value("query").toObject().value("note").toString(),
                      QString::fromUtf8("弹幕 & more=yes"))
                << kind;
            if (post) {
                EXPECT_EQ(data.value("form").toObject().value("title").toString(),
                          QString::fromUtf8("晚上好 100%"));
            } else if (kind == 6 || kind == 10) {  // the mobile kinds carry the session as headers
                const auto seen = sim().http().requestLog().all().back();
                EXPECT_EQ(seen.header("token"), sessionToken) << kind;
                EXPECT_EQ(seen.header("aid"), "vxtool") << kind;
            }
        }
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
