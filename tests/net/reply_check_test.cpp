#include <gtest/gtest.h>

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

// Below 400 the body passes byte for byte, even non-UTF-8; failures get a made-up envelope.
TEST(ReplyCheck, PassesTheBodyOrMakesUpTheEnvelope) {
    const QByteArray body = "{\"error\":0,\"data\":\"中\xff\"}";
    const struct {
        CurlResponse response;
        QByteArray expected;
    } cases[] = {
        {responseOf(200, body.toStdString()), body},
        {responseOf(204, body.toStdString()), body},
        {responseOf(302, body.toStdString()), body},
        {responseOf(399, body.toStdString()), body},
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
        QByteArray reply = "stale";
        EXPECT_EQ(checkReply(reply, c.response), c.expected == body) << c.response.statusCode;
        EXPECT_EQ(reply, c.expected) << c.response.statusCode;
    }
}
