#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QNetworkRequest>
#include <QThread>
#include <QUrl>
#include <QVariant>
#include <atomic>
#include <chrono>
#include <thread>

#include "http/sim_http_server.h"
#include "net/easy_net_manager.h"
#include "support/scoped_env.h"
#include "support/wait.h"
#include "tolvane/operation_abort.h"

namespace {

using tolvane::sim::SimFault;

// The thread's abort flag ends a Qt transfer the server holds at once, not at its time-out.
TEST(OperationAbort, TheThreadsOwnerEndsATransferHeldByTheServer) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimHttpServer server;
    ASSERT_TRUE(server.start());
    server.setFault("/held", SimFault::delay(8000));
    const QUrl url(QString::fromStdString(server.origin() + "/held"));
    std::atomic<bool> abort{false};
    std::atomic<bool> answered{true};
    std::atomic<bool> returned{false};
    std::thread owned([&] {
        QThread::currentThread()->setProperty(tolvane::kOperationAbortProperty,
                                              QVariant::fromValue(static_cast<void*>(&abort)));
        EasyNetManager client;
        QByteArray reply;
        answered = client.get(QNetworkRequest(url), reply, 10000);
        returned = true;
    });
    EXPECT_TRUE(server.requestLog().waitForCount(1, std::chrono::seconds(5)));
    QElapsedTimer elapsed;
    elapsed.start();
    abort = true;
    EXPECT_TRUE(waitUntil([&] { return returned.load(); }, 5000)) << "the transfer went on";
    owned.join();
    EXPECT_FALSE(answered.load());
    EXPECT_LT(elapsed.elapsed(), 1000);
}

}  // namespace
