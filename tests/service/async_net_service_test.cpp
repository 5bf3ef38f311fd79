#include "tolvane/async_net_service.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "http/sim_http_server.h"
#include "service/vx_net_service_imp.h"
#include "support/event_log.h"
#include "support/scoped_env.h"
#include "support/wait.h"
#include "support/watchdog.h"

namespace {

using tolvane::AsyncNetService;
using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;

constexpr int kSlowMs = 600;
constexpr int kWaitMs = 10000;  // the slow operation on a loaded machine can take a while
constexpr int kHeldMs = 8000;   // longer than any test may take: only an abort ends it early
// A route that answers, held back: an operation on it ends unanswered only when aborted.
constexpr const char* kHeld = "/api/sim/echo/none";

// Where the service was built and torn down, as the factory and its destroyed signal saw it.
struct ServiceThreads {
    std::mutex mutex;
    QThread* created = nullptr;
    QThread* destroyed = nullptr;
};
ServiceThreads serviceThreads;

ILiveencoderNetService* createRecorded(ServiceObserver* observer, BreadcrumbSink* sink) {
    auto* service = new VxNetServiceImp(observer, sink);
    QObject::connect(service, &QObject::destroyed, [] {
        std::lock_guard<std::mutex> lock(serviceThreads.mutex);
        serviceThreads.destroyed = QThread::currentThread();
    });
    std::lock_guard<std::mutex> lock(serviceThreads.mutex);
    serviceThreads.created = QThread::currentThread();
    return service;
}

class AsyncNetServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server_.start());
        server_.setFault("/slow", SimFault::delay(kSlowMs));
        server_.setFault(kHeld, SimFault::delay(kHeldMs));
        std::lock_guard<std::mutex> lock(serviceThreads.mutex);
        serviceThreads.created = serviceThreads.destroyed = nullptr;
    }

    // An operation that waits on the simulator's delay and notes that it started and ended.
    std::function<bool(ILiveencoderNetService&)> slowOperation(const char* path = "/slow") {
        const std::string url = server_.origin() + path;
        return [this, url](ILiveencoderNetService& service) {
            log_.add("slow started");
            QByteArray reply;
            const bool answered = service.getRequest(reply, url, {}, {}, kHeldMs + 2000);
            log_.add(answered ? "slow ended" : "slow ended unanswered");
            return true;
        };
    }

    // Destroys the facade under a watchdog while `what` runs; the milliseconds it took.
    static qint64 destroyTimed(std::unique_ptr<AsyncNetService>& net, const std::string& what) {
        QElapsedTimer elapsed;
        elapsed.start();
        const Watchdog watchdog("~AsyncNetService while " + what + " ran");
        net.reset();
        return elapsed.elapsed();
    }

    IsolatedWorkspace workspace_;
    SimHttpServer server_;
    EventLog log_;
};

TEST_F(AsyncNetServiceTest, CallerLoopKeepsTurningWhileASlowOperationRuns) {
    AsyncNetService net(&createRecorded, nullptr, nullptr);
    ASSERT_TRUE(net.isValid());
    QObject context;
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(20);

    std::atomic<QThread*> ranOn{nullptr};
    QThread* answeredOn = nullptr;
    bool answered = false;
    const auto slow = slowOperation();
    QElapsedTimer elapsed;
    elapsed.start();
    const quint64 ticket = net.post(
        [&](ILiveencoderNetService& service) {
            ranOn = QThread::currentThread();
            return slow(service);
        },
        &context,
        [&](bool result) {
            answered = result;
            answeredOn = QThread::currentThread();
        });
    EXPECT_NE(ticket, 0u);

    ASSERT_TRUE(waitUntil([&] { return answered; }, kWaitMs));
    EXPECT_GE(elapsed.elapsed(), kSlowMs - 50);
    EXPECT_GE(ticks, kSlowMs / 20 / 2) << "the caller's timer stalled";
    EXPECT_EQ(answeredOn, QThread::currentThread());
    EXPECT_NE(ranOn.load(), QThread::currentThread());
    std::lock_guard<std::mutex> lock(serviceThreads.mutex);
    EXPECT_EQ(ranOn.load(), serviceThreads.created);
}

TEST_F(AsyncNetServiceTest, CancelAbortsARunningOperationAndDropsAQueuedOne) {
    AsyncNetService net(&createRecorded, nullptr, nullptr);
    QObject context;
    const std::string echo = server_.origin() + "/sim/echo/none";
    auto answered = [this](const std::string& name) {
        return [this, name](auto) { log_.add(name + " answered"); };
    };

    const quint64 running = net.post(slowOperation(kHeld), &context, answered("slow"));
    const quint64 dropped = net.post(
        [this](ILiveencoderNetService&) {
            log_.add("dropped ran");
            return 0;
        },
        &context, answered("dropped"));
    // The abort is for the cancelled operation only: the next one's transfer goes through.
    const quint64 kept = net.post(
        [this, echo](ILiveencoderNetService& service) {
            QByteArray reply;
            log_.add(service.getRequest(reply, echo, {}, {}, 5000) ? "kept ran" : "kept failed");
            return true;
        },
        &context, answered("kept"));
    ASSERT_TRUE(waitUntil([&] { return log_.heard("slow started"); }, kWaitMs));

    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_TRUE(net.cancel(running));
    EXPECT_TRUE(net.cancel(dropped));
    EXPECT_FALSE(net.cancel(dropped)) << "a ticket is cancelled once";
    EXPECT_FALSE(net.cancel(0));
    ASSERT_TRUE(waitUntil([&] { return log_.heard("kept answered"); }, kWaitMs));
    EXPECT_LT(elapsed.elapsed(), 1000) << "the running transfer was waited out";
    EXPECT_FALSE(net.cancel(kept)) << "a finished operation cannot be cancelled";

    // Operations run in the order of posting, and an answer follows its operation.
    EXPECT_EQ(log_.events(), (std::vector<std::string>{"slow started", "slow ended unanswered",
                                                       "kept ran", "kept answered"}));
}

// A worker thread may post for a UI object: the answer goes to its thread, or nowhere once gone.
TEST_F(AsyncNetServiceTest, PostFromAnotherThreadAnswersOnTheContextsThread) {
    AsyncNetService net(&createRecorded, nullptr, nullptr);
    QObject context;
    auto lost = std::make_unique<QObject>();
    std::atomic<QThread*> answeredOn{nullptr};
    std::thread poster([&] {
        net.post([](ILiveencoderNetService& service) { return service.getBizType(); }, &context,
                 [&](int32_t bizType) {
                     EXPECT_EQ(bizType, 13);
                     answeredOn = QThread::currentThread();
                 });
        net.post(slowOperation(), lost.get(), [this](bool) { log_.add("lost answered"); });
    });
    poster.join();
    ASSERT_TRUE(waitUntil(
        [&] { return answeredOn.load() != nullptr && log_.heard("slow started"); }, kWaitMs));
    EXPECT_EQ(answeredOn.load(), QThread::currentThread());
    lost.reset();
    // Answers arrive in order, so once a later one is in, the lost one would have been too.
    net.post([](ILiveencoderNetService& service) { return service.getBizType(); }, &context,
             [this](int32_t) { log_.add("later answered"); });
    ASSERT_TRUE(waitUntil([&] { return log_.heard("later answered"); }, kWaitMs));
    EXPECT_FALSE(log_.heard("lost answered"));
}

TEST_F(AsyncNetServiceTest, DestructionAbortsTheRunningOperationAndDropsTheRest) {
    QObject context;
    auto net = std::make_unique<AsyncNetService>(&createRecorded, nullptr, nullptr);
    net->post(slowOperation(kHeld), &context, [this](bool) { log_.add("slow answered"); });
    net->post(
        [this](ILiveencoderNetService&) {
            log_.add("pending ran");
            return 0;
        },
        &context, [this](int) { log_.add("pending answered"); });
    QFuture<int32_t> pendingFuture =
        net->post([](ILiveencoderNetService& service) { return service.getBizType(); });
    ASSERT_TRUE(waitUntil([&] { return log_.heard("slow started"); }, kWaitMs));
    EXPECT_LT(destroyTimed(net, "an operation"), 1000) << "the running transfer was waited out";
    // The service went on its own thread, after the running operation had been aborted.
    EXPECT_EQ(log_.events(), (std::vector<std::string>{"slow started", "slow ended unanswered"}));
    EXPECT_TRUE(pendingFuture.isCanceled());
    std::lock_guard<std::mutex> lock(serviceThreads.mutex);
    ASSERT_NE(serviceThreads.destroyed, nullptr);
    EXPECT_EQ(serviceThreads.destroyed, serviceThreads.created);
    EXPECT_NE(serviceThreads.destroyed, QThread::currentThread());

    // An answer already queued for the caller is not delivered once the facade is gone either.
    QCoreApplication::processEvents();
    EXPECT_FALSE(log_.heard("slow answered"));
}

// A login runs through the login library, not the module's clients: it is abandoned all the same.
TEST_F(AsyncNetServiceTest, DestructionAbortsALoginHeldByThePassport) {
    workspace_.writeDefaultData(
        QByteArray::fromStdString(R"({"endpoints": {"origin": ")" + server_.origin() + "\"}}"));
    server_.setFault("/app/loginCheck2", SimFault::delay(kHeldMs));
    auto net = std::make_unique<AsyncNetService>(&createRecorded, nullptr, nullptr);
    net->post([this](ILiveencoderNetService& service) {
        log_.add("login started");
        std::string message, longToken;
        const int32_t code = service.login("anchor", "secret123", message, longToken);
        log_.add("login ended " + std::to_string(code));
        return code;
    });
    ASSERT_TRUE(waitUntil([&] { return log_.heard("login started"); }, kWaitMs));
    QThread::msleep(100);  // the request is on its way to the held route
    EXPECT_LT(destroyTimed(net, "a login"), 1000) << "the login library's transfer was waited out";
    EXPECT_EQ(log_.events(), (std::vector<std::string>{"login started", "login ended 210"}));
}

TEST_F(AsyncNetServiceTest, FutureCarriesTheResultOrItsCancellationAndNeedsAService) {
    AsyncNetService net(&createRecorded, nullptr, nullptr);
    QObject context;
    net.post(slowOperation(), &context, [](bool) {});
    QFuture<int32_t> cancelled = net.post([this](ILiveencoderNetService& service) {
        log_.add("cancelled ran");
        return service.getBizType();
    });
    QFuture<std::string> appId =
        net.post([](ILiveencoderNetService& service) { return std::string(service.getAppId()); });
    // Operations without a result answer with nothing.
    QFuture<void> proxySet =
        net.post([](ILiveencoderNetService& service) { service.setProxy(""); });
    net.post([](ILiveencoderNetService& service) { service.setProxy(""); }, &context,
             [this] { log_.add("void answered"); });
    ASSERT_TRUE(waitUntil([&] { return log_.heard("slow started"); }, kWaitMs));
    cancelled.cancel();

    ASSERT_TRUE(waitUntil([&] { return log_.heard("void answered"); }, kWaitMs));
    EXPECT_TRUE(proxySet.isFinished());
    EXPECT_FALSE(proxySet.isCanceled());
    appId.waitForFinished();
    ASSERT_FALSE(appId.isCanceled());
    EXPECT_EQ(appId.result(), "vxtool");
    EXPECT_TRUE(cancelled.isCanceled());
    EXPECT_FALSE(log_.heard("cancelled ran"));

    // Without a service nothing is queued.
    AsyncNetService none(
        [](ServiceObserver*, BreadcrumbSink*) -> ILiveencoderNetService* { return nullptr; },
        nullptr, nullptr);
    EXPECT_FALSE(none.isValid());
    EXPECT_EQ(none.post([](ILiveencoderNetService& s) { return s.getBizType(); }, &context,
                        [](int32_t) {}),
              0u);
    EXPECT_TRUE(none.post([](ILiveencoderNetService& s) { return s.getBizType(); }).isCanceled());
}

}  // namespace
