#include <gtest/gtest.h>

#include <functional>

#include "log/log_writer.h"
#include "support/log_reader.h"
#include "support/sim_service_fixture.h"
#include "support/wait.h"

namespace {

using tolvane::log::kMainLog;
using tolvane::log::kRequestLog;
using tolvane::sim::SimFault;

constexpr char kServerTime[] = R"({"error":0,"data":1700000000})";

// The platform's clock answers a fixed reply, so the request log's lines are known in full.
class RequestLogLines : public SimServiceTest {
protected:
    void startPlatform() override {
        SimServiceTest::startPlatform();
        sim().http().setFault("/api/v1/timestamp", SimFault::httpStatus(200, kServerTime));
    }
};

// Hosts read php.log and tolvane.log line by line, so the lines are known in full.
TEST_F(RequestLogLines, ClockAndHostComposedRequests) {
    ASSERT_TRUE(waitUntil([] { return readLogMessages(kRequestLog).size() >= 4; }, 5000))
        << "waiting for the clock's reply in php.log";
    const QString origin = QString::fromStdString(sim().environment().origin());
    const struct {
        const char* path;
        std::function<bool(QByteArray&, const std::string&)> call;
        QStringList lines;  // REPLY stands for the made-up reply, URL for the URL
    } cases[] = {
        {"/sim/status/404",
         [&](QByteArray& reply, const std::string& url) {
             return service().getRequest(reply, url, {}, {}, 5000);
         },
         {"call function: VxNetServiceImp::getRequest -----------------", "cprGet error:REPLY",
          "url:URL"}},
        {"/sim/status/500",
         [&](QByteArray& reply, const std::string& url) {
             return service().postRequest(reply, url, {}, {}, {{"k", "v w"}}, 5000);
         },
         {"call function: VxNetServiceImp::postRequest -----------------", "cprGet error:REPLY",
          "url:URL", "post:k=v%20w"}},
    };
    QStringList requestLines = {"", "", "get url: /api/v1/timestamp",
                                "resData size: 29,   {\"error\":0,\"data\":17  ......"};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const QString url = origin + c.path;
        const int logged = readLogMessages(kMainLog).size();
        QByteArray reply;
        EXPECT_FALSE(c.call(reply, url.toStdString()));
        QStringList expected;
        for (const QString& line : c.lines) {
            expected
                << QString(line).replace("REPLY", QString::fromUtf8(reply)).replace("URL", url);
        }
        EXPECT_EQ(readLogMessages(kMainLog).mid(logged), expected);
        requestLines << "get url: " + url;
    }
    EXPECT_EQ(readLogMessages(kRequestLog), requestLines);
}

class SilentSlots : public LoggedInSimServiceTest {};

// Slots that send nothing, with every line each writes to tolvane.log.
TEST_F(SilentSlots, WriteOnlyTheirOwnLinesAndSendNothing) {
    const struct {
        const char* what;
        std::function<int32_t()> call;
        int32_t result;
        QStringList lines;
    } cases[] = {
        {"slot 14, a push line the platform never offered",
         [&] { return service().open_live_room("rtmp://elsewhere.example/live/x"); },
         1,
         {"call function: VxNetServiceImp::open_live_room -----------------"}},
        {"slot 19, unsupported by the login library",
         [&] { return service().loginRequestCall("event", "detail", 3); },
         -1,
         {}},
        {"slot 36",
         [&] {
             service().logout();
             return 0;
         },
         0,
         {"[msg] logout begin.", "[msg] logout end."}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::size_t sent = sim().http().requestLog().size();
        const int logged = readLogMessages(tolvane::log::kMainLog).size();
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(readLogMessages(tolvane::log::kMainLog).mid(logged), c.lines);
        EXPECT_EQ(sim().http().requestLog().size(), sent);
    }
}

}  // namespace
