// What a misbehaving barrage server can do to the client: each case ends in its log line and
// the client's reaction, in bounded time.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <atomic>
#include <memory>
#include <string>

#include "barrage/barrage_server.h"
#include "barrage/barrage_texts.h"
#include "barrage/recording_listener.h"
#include "barrage/vx_room_client.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

constexpr int kLoginTimeoutMs = 1000;

bool logHas(const QString& logName, const QString& text) {
    for (const QString& line : readLogMessages(logName)) {
        if (line.contains(text)) {
            return true;
        }
    }
    return false;
}

class HostileBarrageTest : public ::testing::Test {
protected:
    void SetUp() override {
        listener_ = std::make_unique<RecordingListener>();
        client_ = std::make_unique<VxRoomClient>(nullptr, listener_.get());
        MessageClientOptions options;
        options.loginTimeoutMs = kLoginTimeoutMs;
        client_->setClientOptions(options);
        // Direct: the time an error is raised on the library's thread, not when it is handled.
        QObject::connect(
            client_.get(), &VxRoomClient::errorReceived, client_.get(),
            [this] {
                if (firstErrorMs_ < 0) {
                    firstErrorMs_ = sinceLogin_.elapsed();
                }
            },
            Qt::DirectConnection);
    }
    void TearDown() override { client_.reset(); }

    void login(const sim::BarrageServer& server) {
        RoomLoginParams params;
        params.roomId = 4242;
        params.servers.push_back({sim::BarrageServer::host(), server.port()});
        client_->setLoginParams(params);
        sinceLogin_.start();
        client_->login();
    }

    IsolatedWorkspace workspace_;
    std::unique_ptr<RecordingListener> listener_;
    std::unique_ptr<VxRoomClient> client_;
    QElapsedTimer sinceLogin_;
    std::atomic<qint64> firstErrorMs_{-1};
};

TEST_F(HostileBarrageTest, AFrameWrittenOneByteAtATimeArrivesWhole) {
    sim::BarrageServer server;
    login(server);
    // The pieces must not interleave with the replies to the login's channel requests, so
    // they go out once the last of those has arrived.
    ASSERT_TRUE(waitUntil([&] { return listener_->state().countOfType("monthrk") == 1; }, 5000));
    const std::string text = sim::BarrageTexts::chat(900, 4242, 77, "slow", "one by one 中");
    // Each byte its own write and, with the gap, its own segment: every read sees one byte.
    server.sendTextInPieces(text, 1, std::chrono::milliseconds(1));
    ASSERT_TRUE(waitUntil(
        [&] {
            for (const BarrageMessage& m : listener_->state().messages) {
                if (m.headerAt0 == 900) {
                    return true;
                }
            }
            return false;
        },
        // A hundred timed writes are slow under the thread sanitizer.
        30000));
    int copies = 0;
    for (const BarrageMessage& m : listener_->state().messages) {
        if (m.headerAt0 == 900) {
            ++copies;
            EXPECT_EQ(m.rawText, text);
        }
    }
    EXPECT_EQ(copies, 1);
    EXPECT_EQ(firstErrorMs_.load(), -1);
}

TEST_F(HostileBarrageTest, AServerThatNeverAnswersTimesOutTheLogin) {
    sim::BarrageServer server;
    server.setAnswerLogin(false);
    login(server);
    ASSERT_TRUE(waitUntil([&] { return firstErrorMs_.load() >= 0; }, 3 * kLoginTimeoutMs));
    // The login time-out, honoured within 10 %.
    EXPECT_GE(firstErrorMs_.load(), kLoginTimeoutMs);
    EXPECT_LE(firstErrorMs_.load(), kLoginTimeoutMs * 11 / 10);
    EXPECT_TRUE(logHas(tolvane::log::kMainLog, QStringLiteral("[msg] error:10005")));
    EXPECT_TRUE(listener_->state().statuses.empty());
    // The client goes on to the next attempt a second later.
    EXPECT_TRUE(waitUntil([&] { return server.connections().size() >= 2; }, 3000));
}

}  // namespace
