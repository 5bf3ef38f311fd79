#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QNetworkRequest>
#include <QThread>
#include <QUrl>
#include <QVariant>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "http/sim_http_server.h"
#include "net/easy_net_manager.h"
#include "net/vx_net_request.h"
#include "support/scoped_env.h"
#include "support/wait.h"
#include "tolvane/operation_abort.h"

namespace {

using tolvane::sim::SimFault;

// The owner of a thread raises its abort flag while a transfer of either client waits there for
// a reply the simulator holds back: the call returns unanswered at once, not at its time-out.
TEST(OperationAbort, TheThreadsOwnerEndsATransferHeldByTheServer) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimHttpServer server;
    ASSERT_TRUE(server.start());
    server.setFault("/held", SimFault::delay(8000));
    const QUrl url(QString::fromStdString(server.origin() + "/held"));
    const struct {
        const char* name;
        std::function<bool()> send;
    } clients[] = {
        {"libcurl",
         [&] {
             VxNetRequest request(0, nullptr);
             QByteArray reply;
             return request.cprSyncGet(reply, url, {}, {}, 10000);
         }},
        {"Qt",
         [&] {
             EasyNetManager client;
             QByteArray reply;
             return client.get(QNetworkRequest(url), reply, 10000);
         }},
    };
    for (const auto& client : clients) {
        SCOPED_TRACE(client.name);
        std::atomic<bool> abort{false};
        std::atomic<bool> answered{true};
        std::atomic<bool> returned{false};
        const std::size_t seen = server.requestLog().size();
        std::thread owned([&] {
            QThread::currentThread()->setProperty(tolvane::kOperationAbortProperty,
                                                  QVariant::fromValue(static_cast<void*>(&abort)));
            answered = client.send();
            returned = true;
        });
        EXPECT_TRUE(server.requestLog().waitForCount(seen + 1, std::chrono::seconds(5)));
        QElapsedTimer elapsed;
        elapsed.start();
        abort = true;
        EXPECT_TRUE(waitUntil([&] { return returned.load(); }, 5000)) << "the transfer went on";
        owned.join();
        EXPECT_FALSE(answered.load());
        EXPECT_LT(elapsed.elapsed(), 1000);
    }
}

}  // namespace
