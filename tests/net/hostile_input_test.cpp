// A misbehaving server must leave either client with a result code and a log line, in bounded
// time and memory.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonObject>
#include <string>

#include "http/sim_http_server.h"
#include "net/easy_net_manager.h"
#include "net/vx_net_request.h"
#include "support/log_reader.h"
#include "support/peak_memory.h"
#include "support/replies.h"
#include "support/scoped_env.h"

using tolvane::sim::SimFault;
using tolvane::sim::SimFaultTable;

namespace {

// ThreadSanitizer keeps shadow memory for every byte touched, several times its size; the bound
// stays below the 200 MB a client would hold if it kept the whole reply.
#if defined(__SANITIZE_THREAD__)
constexpr long kGrowthBoundKb = 160 * 1024;
#else
constexpr long kGrowthBoundKb = 64 * 1024;
#endif

TEST(HostileInputTest, BrokenTransfersFailWithTheirCodeAndLogLine) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimHttpServer server;
    ASSERT_TRUE(server.start());
    workspace.writeDefaultData(R"({"endpoints": {"origin": ")" +
                               QByteArray::fromStdString(server.httpOrigin()) + "\"}}");
    VxNetRequest request(0, nullptr, nullptr);
    const std::string okBody = R"({"error":0,"data":{"nickname":"anchor"}})";
    struct Case {
        const char* name;
        bool qt;
        SimFault fault;
        int timeoutMs;
        int errorCode;       // the made-up reply's "error"
        const char* detail;  // in its "data" (request client), or the log line (Qt client)
        qint64 minMs;
        qint64 maxMs;
    };
    // clang-format off
    const Case cases[] = {
        // Refused at the limit as it streams in, long before 200 MB have been read.
        {"200 MB reply", false, SimFault::largeBody(200u << 20), 20000, 16, "reply larger than 8388608", 0, 10000},
        // One byte a second keeps the connection busy; the time-out still ends it, within 10 %.
        {"one byte a second", false, SimFault::trickle(okBody, 1000), 1500, 8, "", 1350, 1650},
        {"truncated chunked body", false, SimFault::truncatedChunks(okBody), 5000, 4, "", 0, 4000},
        {"Qt: 200 MB reply", true, SimFault::largeBody(200u << 20), 20000, 5, "reply larger than 8388608 bytes refused", 0, 10000},
        {"Qt: one byte a second", true, SimFault::trickle(okBody, 1000), 1500, -6, "QNetworkAccessManager timeout 1500", 1350, 1650},
    };
    // clang-format on
    EasyNetManager client;
    const QUrl url(QString::fromStdString(server.httpOrigin()) + "/sim/echo/none");
    // Qt's network machinery is set up by the first request; that is not the reply's memory.
    QByteArray warmUp;
    ASSERT_TRUE(client.get(QNetworkRequest(url), warmUp, 5000));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PeakMemory memory;
        QByteArray reply;
        server.setFault(SimFaultTable::kAnyPath, c.fault);
        QElapsedTimer timer;
        timer.start();
        EXPECT_FALSE(c.qt ? client.get(QNetworkRequest(url), reply, c.timeoutMs)
                          : request.cprGet(reply, 1, "sim/echo/query", {}, {}, c.timeoutMs));
        const qint64 elapsedMs = timer.elapsed();
        ASSERT_TRUE(memory.available()) << "no peak memory figures from /proc";
        EXPECT_LT(memory.growthKb(), kGrowthBoundKb);
        EXPECT_GE(elapsedMs, c.minMs);
        EXPECT_LE(elapsedMs, c.maxMs);
        const QJsonObject made = replyObject(reply);
        EXPECT_EQ(made.value("error").toInt(), c.errorCode) << reply.toStdString();
        if (c.qt) {
            EXPECT_TRUE(logContains(tolvane::log::kMainLog, QString::fromUtf8(c.detail)));
        } else {
            EXPECT_TRUE(made.value("data").toString().contains(c.detail)) << reply.toStdString();
            EXPECT_TRUE(logContains(tolvane::log::kMainLog,
                                    QStringLiteral("cprGet error:") + QString::fromUtf8(reply)));
        }
    }
}

}  // namespace
