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

// Every kind is checked against the request client itself; these show the service's wiring:
// its session, its clock and its signature.
TEST_F(ServiceTransport, DescribedRequestsCarryTheSession) {
    login();
    for (const bool post : {false, true}) {
        RequestDescriptor request;
        request.kind = post ? 2 : 6;
        request.path = post ? "sim/echo/query" : "sim/echo/mobile3";
        request.groupB = {{"note", "弹幕 & more=yes"}};
        if (post) {
            request.groupC = {{"title", "晚上好 100%"}};
        }
        request.timeoutMs = 5000;
        QByteArray reply;
        ASSERT_TRUE(post ? service().requestPost(reply, request)
                         : service().requestGet(reply, request))
            << reply.toStdString();
        EXPECT_TRUE(replyData(reply).value("auth_ok").toBool()) << reply.toStdString();
        const auto seen = sim().http().requestLog().all().back();
        EXPECT_EQ(seen.queryValue("note"), "弹幕 & more=yes");
        EXPECT_EQ(post ? seen.formValue("title") : seen.header("token"),
                  post ? "晚上好 100%" : token());
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
