// Received barrage messages per second: the whole client path (socket, frame, decode,
// classify, BarrageMessage, listener, message log) against a plain read of the same byte
// stream from the same kind of loopback socket, and against its true limit: the plain read
// that also writes msg.log's lines (time prefix, text, a line end) with its flush every sixth
// line. Compare rates from one run only: the machine's load moves them all.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "barrage/barrage_server.h"
#include "barrage/barrage_texts.h"
#include "barrage/vx_room_client.h"
#include "log/log_writer.h"
#include "tolvane/i_room_listener.h"
#include "vxencoder/vx_frame.h"

namespace {

constexpr int kMessagesPerBatch = 50000;
constexpr std::size_t kPayloadSize = 200;
constexpr auto kBatchTimeout = std::chrono::seconds(60);

// Chat messages padded to exactly kPayloadSize bytes, framed back to back.
std::string buildStream(int count) {
    std::string stream;
    for (int i = 0; i < count; ++i) {
        std::string text(10, 'x');
        std::string payload = sim::BarrageTexts::chat(i, 4242, 2000 + i % 50, "viewer", text);
        text.append(kPayloadSize - payload.size(), 'y');
        payload = sim::BarrageTexts::chat(i, 4242, 2000 + i % 50, "viewer", text);
        vxAppendFrame(payload, stream);
    }
    return stream;
}

class CountingListener : public IRoomListener {
public:
    std::atomic<int> chats{0};
    std::atomic<int> loginReplies{0};
    int32_t onRoomStatus(int32_t status) override {
        loginReplies += status == 0 ? 1 : 0;
        return 0;
    }
    int32_t onMemberInfoValue(int32_t) override { return 0; }
    int32_t onFansBrand(const char*) override { return 0; }
    int32_t onKeepAliveFirst(int32_t) override { return 0; }
    int32_t onKeepAliveSecond(int32_t) override { return 0; }
    int32_t onHostText(const char*) override { return 0; }
    int32_t onShowEnd(int32_t, int32_t) override { return 0; }
    int32_t onBarrageMessage(const BarrageMessage* message) override {
        if (message->typeCode == 2) {
            chats.fetch_add(1, std::memory_order_relaxed);
        }
        return 0;
    }
    int32_t onNoticeValue(int32_t) override { return 0; }
};

template <typename Condition>
bool waitFor(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + kBatchTimeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

void BM_ClientReceivePath(benchmark::State& state) {
    const std::string stream = buildStream(kMessagesPerBatch);
    sim::BarrageServer server;
    CountingListener listener;
    // The message log is opened as the client is made; with the temporary location on a
    // device no log folder can be made, so the second variant shows the path without it.
    const QByteArray logRoot = qgetenv("TMPDIR");
    if (state.range(0) == 0) {
        qputenv("TMPDIR", "/dev/null");
    }
    VxRoomClient client(nullptr, &listener);
    qputenv("TMPDIR", logRoot);
    RoomLoginParams params;
    params.roomId = 4242;
    params.servers.push_back({sim::BarrageServer::host(), server.port()});
    client.setLoginParams(params);
    client.login();
    if (!waitFor([&] { return listener.loginReplies.load() == 1; })) {
        state.SkipWithError("no login reply");
        return;
    }
    for (auto _ : state) {
        const int target = listener.chats.load() + kMessagesPerBatch;
        server.sendBytes(stream);
        if (!waitFor([&] { return listener.chats.load() >= target; })) {
            state.SkipWithError("messages went missing");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * kMessagesPerBatch);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
    client.logout();
}

// msg.log's lines written as cheaply as they can be: gathered in one buffer and handed to the
// kernel in one write every sixth line, which is all the flush rule asks of a writer.
class BareMessageLog {
public:
    explicit BareMessageLog(const QString& path)
        : fd_(::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_APPEND, 0600)) {}
    ~BareMessageLog() {
        flush();
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    bool isOpen() const { return fd_ >= 0; }
    void write(const char* text, std::size_t size) {
        lines_.append(tolvane::log::timePrefixUtf8().constData(), kTimePrefixLength);
        lines_.append(text, size);
        lines_.push_back('\n');
        if (++count_ == kLinesPerFlush) {
            flush();
        }
    }

private:
    static constexpr std::size_t kTimePrefixLength = 15;  // "[HH:mm:ss.zzz] "
    static constexpr int kLinesPerFlush = 6;
    void flush() {
        if (fd_ >= 0 && !lines_.empty() &&
            ::write(fd_, lines_.data(), lines_.size()) != static_cast<ssize_t>(lines_.size())) {
            ::close(fd_);
            fd_ = -1;
        }
        lines_.clear();
        count_ = 0;
    }

    int fd_;
    std::string lines_;
    int count_ = 0;
};

// Argument 1: every message also written as a msg.log line (the receive path's true limit);
// 0: the bytes read and dropped.
void BM_PlainSocketRead(benchmark::State& state) {
    const std::string stream = buildStream(kMessagesPerBatch);
    sim::BarrageServer server;
    asio::io_context io;
    asio::ip::tcp::socket socket(io);
    socket.connect({asio::ip::make_address(sim::BarrageServer::host()), server.port()});
    socket.set_option(asio::ip::tcp::no_delay(true));
    if (!server.waitUntil([](const auto& records) { return records.size() == 1; },
                          std::chrono::seconds(5))) {
        state.SkipWithError("no connection");
        return;
    }
    const bool withLog = state.range(0) == 1;
    BareMessageLog log(QDir(qEnvironmentVariable("TMPDIR")).filePath("bare_msg.log"));
    if (withLog && !log.isOpen()) {
        state.SkipWithError("no log file");
        return;
    }
    std::vector<char> buffer(64 * 1024 + 1);
    vxFrameReader frames;
    std::size_t lines = 0;
    for (auto _ : state) {
        server.sendBytes(stream);
        std::size_t received = 0;
        while (received < stream.size()) {
            const std::size_t size =
                socket.read_some(asio::buffer(buffer.data(), buffer.size() - 1));
            received += size;
            if (withLog) {
                frames.FeedInPlace(buffer.data(), size, [&](const char* text, std::size_t length) {
                    log.write(text, length);
                    ++lines;
                    return true;
                });
            }
        }
        benchmark::DoNotOptimize(buffer.data());
    }
    if (withLog && lines != static_cast<std::size_t>(state.iterations()) * kMessagesPerBatch) {
        state.SkipWithError("messages went missing");
        return;
    }
    state.SetItemsProcessed(state.iterations() * kMessagesPerBatch);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
}

// Argument 1: with the message log (what the module does); 0: the log left out.
BENCHMARK(BM_ClientReceivePath)
    ->ArgName("messageLog")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(2.0);
BENCHMARK(BM_PlainSocketRead)
    ->ArgName("messageLog")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(2.0);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    // Logs go to a throw-away folder, not the user's temporary location.
    QTemporaryDir dir;
    qputenv("TMPDIR", dir.path().toLocal8Bit());
    qputenv("TOLVANE_DEFAULT_DATA", (dir.path() + "/default.data").toLocal8Bit());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
