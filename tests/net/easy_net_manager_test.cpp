#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonObject>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <thread>

#include "http/sim_http_server.h"
#include "net/easy_net_manager.h"
#include "support/log_reader.h"
#include "support/replies.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

using tolvane::log::kMainLog;
using tolvane::net::FormPart;
using tolvane::sim::SimCertificateAuthority;
using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;
using tolvane::sim::SimRequest;
using Pairs = std::vector<std::pair<std::string, std::string>>;

// The simulator answers these paths with fixed statuses, bodies and delays.
class FixedReplies : public SimHttpServer {
public:
    FixedReplies() {
        setFault("/ok", SimFault::httpStatus(200, "hello"));
        for (const int status : {404, 500}) {
            const std::string code = std::to_string(status);
            setFault("/status/" + code, SimFault::httpStatus(status, "body-" + code));
        }
        for (const int ms : {50, 180, 1000, 3000, 5000}) {
            setFault("/delay/" + std::to_string(ms),
                     SimFault::httpStatus(200, "late").withDelay(ms));
        }
    }
    QUrl url(const QString& path) const { return QUrl(QString::fromStdString(origin()) + path); }
};

class EasyNetManagerTest : public ::testing::Test {
protected:
    QNetworkRequest request(const QString& path) const {
        return QNetworkRequest(server_.url(path));
    }
    QStringList newLogLines(int from) const { return readLogMessages(kMainLog).mid(from); }

    void SetUp() override { ASSERT_TRUE(server_.start()); }

    IsolatedWorkspace workspace_;
    FixedReplies server_;
    EasyNetManager client_;
};

TEST_F(EasyNetManagerTest, BlockingGetOutcomes) {
    const QString refusedUrl = QStringLiteral("http://127.0.0.1:1/ok");  // nothing listens there
    const QString base = server_.url(QString()).toString();
    struct Case {
        QString url;
        int timeoutMs;
        bool ok;
        int error;  // of the made-up envelope, when not ok
        QByteArray data;
        QStringList log;
    };
    const QString failed = "QNetworkAccessManager get NetworkError:";
    // clang-format off
    const Case cases[] = {
        {base + "/ok", 2000, true, 0, "hello", {}},
        {base + "/status/404", 2000, false, 203, "body-404", {failed + "203", "url:" + base + "/status/404", "body-404"}},
        {base + "/status/500", 2000, false, 401, "body-500", {failed + "401", "url:" + base + "/status/500", "body-500"}},
        {base + "/delay/3000", 200, false, -6, "", {"QNetworkAccessManager timeout 200", "url:" + base + "/delay/3000"}},
        {refusedUrl, 2000, false, 1, "", {failed + "1", "url:" + refusedUrl}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.url.toStdString());
        const int logged = readLogMessages(kMainLog).size();
        QByteArray reply = "stale";
        QElapsedTimer elapsed;
        elapsed.start();
        const bool ok = client_.get(QNetworkRequest(QUrl(c.url)), reply, c.timeoutMs);
        EXPECT_LT(elapsed.elapsed(), c.timeoutMs + 400);
        EXPECT_EQ(ok, c.ok);
        if (c.ok) {
            EXPECT_EQ(reply, c.data);
        } else {
            const QJsonObject made = replyObject(reply);
            EXPECT_EQ(made.value("error").toInt(), c.error) << reply.toStdString();
            EXPECT_EQ(made.value("data").toString().toUtf8(), c.data);
            EXPECT_EQ(made.value("msg").toString(), c.error == -6
                                                        ? QStringLiteral("[Error] 网络请求超时")
                                                        : QStringLiteral("[Error] 网络请求失败"));
        }
        EXPECT_EQ(newLogLines(logged), c.log);
    }
}

TEST_F(EasyNetManagerTest, PostSendsAFormAndLogsItsOwnErrorLine) {
    QByteArray reply;
    ASSERT_TRUE(client_.post(request("/sim/echo/none"), "a=1&b=%E4%B8%AD", reply, 2000));
    const SimRequest seen = server_.requestLog().all().back();
    EXPECT_EQ(seen.header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(seen.form, (Pairs{{"a", "1"}, {"b", "中"}}));

    const int logged = readLogMessages(kMainLog).size();
    EXPECT_FALSE(client_.post(request("/status/500"), "x=1", reply, 2000));
    EXPECT_EQ(replyObject(reply).value("error").toInt(), 401);
    EXPECT_EQ(newLogLines(logged),
              QStringList({"post:x=1", "QNetworkAccessManager NetworkError error:401",
                           "url:" + server_.url("/status/500").toString(), "body-500"}));
}

// The handler runs once, later, on its receiver's thread, and never once that or the client ends.
TEST_F(EasyNetManagerTest, AsyncHandlerRunsExactlyOnceWhileItsReceiverLives) {
    enum class End { Nothing, Receiver, Client };
    struct Case {
        const char* path;
        int timeoutMs;
        End end;
        int calls;
        QByteArray body;
        bool onWorker = false;  // the receiver lives on a thread of its own
    };
    const Case cases[] = {
        {"/ok", 2000, End::Nothing, 1, "hello"},
        {"/status/404", 2000, End::Nothing, 1, ""},  // network errors hand over an empty body
        {"/delay/180", 150, End::Nothing, 1, ""},    // the answer arrives just after the timer
        {"/delay/50", 1000, End::Receiver, 0, ""},   // reply after the receiver died
        {"/delay/1000", 50, End::Receiver, 0, ""},   // time-out after the receiver died
        {"/delay/50", 1000, End::Client, 0, ""},     // reply after stop()
        {"/ok", 2000, End::Nothing, 1, "hello", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        EasyNetManager client;
        auto receiver = std::make_unique<QObject>();
        QThread worker;
        if (c.onWorker) {
#if defined(__SANITIZE_THREAD__)
            continue;  // Qt's event queue hands over with locks the uninstrumented Qt hides
#endif
            worker.start();
            receiver->moveToThread(&worker);
        }
        std::atomic<int> calls{0};
        QByteArray body;
        QThread* thread = nullptr;
        const auto handler = [&](const QByteArray& reply) {
            body = reply;
            thread = QThread::currentThread();
            ++calls;
        };
        client.getAsync(request(c.path), receiver.get(), handler, c.timeoutMs);
        EXPECT_EQ(calls.load(), 0);
        if (c.end == End::Client) {
            client.stop();
        } else if (c.end == End::Receiver) {
            receiver.reset();
        } else {
            ASSERT_TRUE(waitUntil([&] { return calls.load() > 0; }, c.timeoutMs + 1000));
        }
        spinEvents(200);  // room for a completion that must not come
        worker.quit();
        worker.wait();
        EXPECT_EQ(calls.load(), c.calls);
        EXPECT_EQ(body, c.body);
        EXPECT_EQ(thread, !c.calls ? nullptr : c.onWorker ? &worker : QThread::currentThread());
    }
}

// Stop releases a caller blocked in any of the three calls, from a nested loop or another thread.
TEST_F(EasyNetManagerTest, StopReleasesABlockedCallerAndEndsTheClient) {
    for (const std::string name : {"get", "post", "multipart"}) {
        const auto call = [&name](EasyNetManager& client, const QNetworkRequest& to,
                                  QByteArray& reply) {
            return name == "get" ? client.get(to, reply, 5000)
                   : name == "post"
                       ? client.post(to, "a=1", reply, 5000)
                       : client.postMultipart(to, {FormPart::text("a", "1")}, reply, 5000);
        };
        for (const bool fromOtherThread : {false, true}) {
            SCOPED_TRACE(name + (fromOtherThread ? ", other thread" : ", nested loop"));
            EasyNetManager client;
            std::thread stopper;
            if (fromOtherThread) {
                stopper = std::thread([&client] {
                    std::this_thread::sleep_for(std::chrono::milliseconds(100));
                    client.stop();
                });
            } else {
                QTimer::singleShot(100, [&client] { client.stop(); });
            }
            QByteArray reply;
            QElapsedTimer elapsed;
            elapsed.start();
            EXPECT_FALSE(call(client, request("/delay/5000"), reply));
            EXPECT_LT(elapsed.elapsed(), 1500);
            EXPECT_EQ(replyError(reply), 5);  // operation canceled
            if (stopper.joinable()) {
                stopper.join();
            }
            // A stopped client sends nothing more and leaves the reply alone.
            reply = "untouched";
            EXPECT_FALSE(call(client, request("/ok"), reply));
            EXPECT_EQ(reply, "untouched");
            EXPECT_TRUE(server_.requestLog().to("/ok").empty());
        }
    }
}

}  // namespace
