#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include "net/reply_check.h"

using tolvane::net::checkReply;
using tolvane::net::CprErrorCode;
using tolvane::net::CurlResponse;

namespace {

CurlResponse responseOf(long status, std::string body, CprErrorCode error = CprErrorCode::OK,
                        std::string message = {}) {
    CurlResponse response;
    response.statusCode = status;
    response.body = std::move(body);
    response.errorCode = error;
    response.errorMessage = std::move(message);
    return response;
}

}  // namespace

TEST(ReplyCheck, PassesTheBodyOfEveryStatusBelow400) {
    for (long status : {200L, 204L, 302L, 399L}) {
        QByteArray reply = "stale";
        EXPECT_TRUE(checkReply(reply, responseOf(status, "{\"error\":0,\"data\":\"中\"}")))
            << status;
        EXPECT_EQ(reply, QByteArray("{\"error\":0,\"data\":\"中\"}")) << status;
    }
}

TEST(ReplyCheck, MakesUpTheEnvelopeForFailures) {
    const struct {
        CurlResponse response;
        QByteArray expected;
    } cases[] = {
        {responseOf(400, "bad"),
         R"({"data":"bad","error":400,"msg":"[Error] 服务器返回异常，错误码 400"})"},
        {responseOf(500, "{\"x\":1}"),
         R"({"data":"{\"x\":1}","error":500,"msg":"[Error] 服务器返回异常，错误码 500"})"},
        // A status, even with a transport error after it, is what the reply reports.
        {responseOf(404, "", CprErrorCode::OPERATION_TIMEDOUT, "late"),
         R"({"data":"","error":404,"msg":"[Error] 服务器返回异常，错误码 404"})"},
        // A good status whose body broke off is no reply.
        {responseOf(200, "{\"err", CprErrorCode::OPERATION_TIMEDOUT, "timed out"),
         R"({"data":"timed out","error":8,"msg":"[Error] 网络请求失败"})"},
        {responseOf(0, "", CprErrorCode::CONNECTION_FAILURE, "Failed to connect"),
         R"({"data":"Failed to connect","error":1,"msg":"[Error] 网络请求失败"})"},
        // No exchange but no error either still counts as a failure.
        {responseOf(0, "ignored"), R"({"data":"","error":0,"msg":"[Error] 网络请求失败"})"},
    };
    for (const auto& c : cases) {
        QByteArray reply;
        EXPECT_FALSE(checkReply(reply, c.response)) << c.response.statusCode;
        EXPECT_EQ(reply, c.expected);
    }
}
