// Received barrage messages per second: the whole client path (socket, frame, decode,
// classify, BarrageMessage, listener, message log) against a plain read of the same byte
// stream from the same kind of loopback socket, and against its true limit: the plain read
// that also writes msg.log's lines (time prefix, text, a line end) with its flush every sixth
// line. The machine's load moves every rate, so BM_ReceivePathPaired alternates one batch of
// each in the same loop and reports their ratio; the other four are for reference.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

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
using Clock = std::chrono::steady_clock;

// Chat messages padded to exactly kPayloadSize bytes, framed back to back.
const std::string& batchStream() {
    static const std::string stream = [] {
        std::string bytes;
        for (int i = 0; i < kMessagesPerBatch; ++i) {
            std::string text(10, 'x');
            std::string payload = sim::BarrageTexts::chat(i, 4242, 2000 + i % 50, "viewer", text);
            text.append(kPayloadSize - payload.size(), 'y');
            payload = sim::BarrageTexts::chat(i, 4242, 2000 + i % 50, "viewer", text);
            vxAppendFrame(payload, bytes);
        }
        return bytes;
    }();
    return stream;
}

class CountingListener : public IRoomListener {
public:
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
        if (message->typeCode == 2 &&
            chats_.fetch_add(1, std::memory_order_relaxed) + 1 == target_.load()) {
            std::lock_guard<std::mutex> lock(mutex_);
            reached_.notify_all();
        }
        return 0;
    }
    int32_t onNoticeValue(int32_t) override { return 0; }

    // Waits for the chat messages expected; woken by the last one rather than polling, so the
    // waiting thread takes no processor time from the receive path it measures.
    bool waitForChats() {
        std::unique_lock<std::mutex> lock(mutex_);
        const int target = target_.load();
        return reached_.wait_for(lock, kBatchTimeout, [&] { return chats_.load() >= target; });
    }
    // Called before the batch is sent.
    void expectChats(int count) { target_ = chats_.load() + count; }

private:
    std::atomic<int> chats_{0};
    std::atomic<int> target_{-1};
    std::mutex mutex_;
    std::condition_variable reached_;
};

template <typename Condition>
bool waitFor(Condition condition) {
    const auto deadline = Clock::now() + kBatchTimeout;
    while (!condition()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return true;
}

// The module's client logged in to its own server.
class ClientSide {
public:
    explicit ClientSide(bool withLog) {
        // The message log is opened as the client is made; with the temporary location on a
        // device no log folder can be made, so the path runs without it.
        const QByteArray logRoot = qgetenv("TMPDIR");
        if (!withLog) {
            qputenv("TMPDIR", "/dev/null");
        }
        client_ = std::make_unique<VxRoomClient>(nullptr, &listener_);
        logPath_ = QFile::encodeName(tolvane::log::logFilePath(tolvane::log::kMessageLog));
        qputenv("TMPDIR", logRoot);
        RoomLoginParams params;
        params.roomId = 4242;
        params.servers.push_back({sim::BarrageServer::host(), server_.port()});
        client_->setLoginParams(params);
        client_->login();
        ready_ = waitFor([&] { return listener_.loginReplies.load() == 1; });
    }
    ~ClientSide() { client_->logout(); }
    bool ready() const { return ready_; }

    // Sends one batch and returns once the listener has heard all of it.
    bool runBatch() {
        listener_.expectChats(kMessagesPerBatch);
        server_.sendBytes(batchStream());
        return listener_.waitForChats();
    }
    // Empties msg.log between batches, so that the kernel's writeback of a growing file does
    // not decide the timings.
    void truncateLog() const {
        if (!logPath_.isEmpty()) {
            (void)::truncate(logPath_.constData(), 0);
        }
    }

private:
    sim::BarrageServer server_;
    CountingListener listener_;
    std::unique_ptr<VxRoomClient> client_;
    QByteArray logPath_;
    bool ready_ = false;
};

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
        const std::size_t at = lines_.size();
        lines_.resize(at + tolvane::log::kTimePrefixLength);
        tolvane::log::writeTimePrefix(&lines_[at]);
        lines_.append(text, size);
        lines_.push_back('\n');
        if (++count_ == kLinesPerFlush) {
            flush();
        }
    }
    void truncate() {
        if (fd_ >= 0) {
            (void)::ftruncate(fd_, 0);
        }
    }

private:
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

// A plain socket reading the same stream from its own server, cutting the frames and, with
// the log, writing each as a msg.log line.
class BareSide {
public:
    explicit BareSide(bool withLog)
        : withLog_(withLog),
          log_(QDir(qEnvironmentVariable("TMPDIR")).filePath("bare_msg.log")),
          socket_(io_) {
        socket_.connect({asio::ip::make_address(sim::BarrageServer::host()), server_.port()});
        socket_.set_option(asio::ip::tcp::no_delay(true));
        ready_ = server_.waitUntil([](const auto& records) { return records.size() == 1; },
                                   std::chrono::seconds(5)) &&
                 (!withLog || log_.isOpen());
    }
    bool ready() const { return ready_; }

    // Sends one batch and reads it whole; false when a message went missing.
    bool runBatch() {
        const std::string& stream = batchStream();
        server_.sendBytes(stream);
        std::size_t received = 0;
        std::size_t lines = 0;
        while (received < stream.size()) {
            const std::size_t size =
                socket_.read_some(asio::buffer(buffer_.data(), buffer_.size() - 1));
            received += size;
            if (withLog_) {
                frames_.FeedInPlace(buffer_.data(), size,
                                    [&](const char* text, std::size_t length) {
                                        log_.write(text, length);
                                        ++lines;
                                        return true;
                                    });
            }
        }
        benchmark::DoNotOptimize(buffer_.data());
        return !withLog_ || lines == static_cast<std::size_t>(kMessagesPerBatch);
    }
    void truncateLog() { log_.truncate(); }

private:
    sim::BarrageServer server_;
    const bool withLog_;
    BareMessageLog log_;
    asio::io_context io_;
    asio::ip::tcp::socket socket_;
    std::vector<char> buffer_ = std::vector<char>(64 * 1024 + 1);
    vxFrameReader frames_;
    bool ready_ = false;
};

void setRates(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * kMessagesPerBatch);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(batchStream().size()));
}

// One side alone, batch after batch.
template <typename Side>
void runSide(benchmark::State& state, const char* notReady) {
    Side side(state.range(0) == 1);
    if (!side.ready()) {
        state.SkipWithError(notReady);
        return;
    }
    for (auto _ : state) {
        if (!side.runBatch()) {
            state.SkipWithError("messages went missing");
            return;
        }
    }
    setRates(state);
}

// Argument 1: with the message log (what the module does); 0: the log left out.
void BM_ClientReceivePath(benchmark::State& state) {
    runSide<ClientSide>(state, "no login reply");
}

// Argument 1: every message also written as a msg.log line (the receive path's true limit);
// 0: the bytes read and dropped.
void BM_PlainSocketRead(benchmark::State& state) {
    runSide<BareSide>(state, "no connection or no log file");
}

// Wall time and the processor time of the whole process (every thread, user and kernel).
struct Stopwatch {
    Clock::time_point wall = Clock::now();
    std::clock_t cpu = std::clock();
    double wallSeconds() const {
        return std::chrono::duration<double>(Clock::now() - wall).count();
    }
    double cpuSeconds() const { return static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC; }
};

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// One batch through the client with msg.log, one through the plain reader with its log lines,
// in alternating order, both logs emptied outside the timed region. Each pair sees the same
// load, so the median of the pairs' ratios is the figure to compare; the rates come from the
// summed times. The ratio of processor time, which the load moves far less, comes beside it.
void BM_ReceivePathPaired(benchmark::State& state) {
    ClientSide client(true);
    BareSide bare(true);
    if (!client.ready() || !bare.ready()) {
        state.SkipWithError("no login reply or no connection");
        return;
    }
    double clientSeconds = 0;
    double bareSeconds = 0;
    std::vector<double> ratios;
    std::vector<double> cpuRatios;
    for (auto _ : state) {
        client.truncateLog();
        bare.truncateLog();
        bool whole = true;
        double clientBatch = 0, bareBatch = 0, clientCpu = 0, bareCpu = 0;
        for (int turn = 0; turn < 2; ++turn) {
            const Stopwatch watch;
            if ((turn == 0) == (ratios.size() % 2 == 0)) {
                whole = client.runBatch() && whole;
                clientBatch = watch.wallSeconds();
                clientCpu = watch.cpuSeconds();
            } else {
                whole = bare.runBatch() && whole;
                bareBatch = watch.wallSeconds();
                bareCpu = watch.cpuSeconds();
            }
        }
        if (!whole) {
            state.SkipWithError("messages went missing");
            return;
        }
        clientSeconds += clientBatch;
        bareSeconds += bareBatch;
        ratios.push_back(bareBatch / clientBatch);
        cpuRatios.push_back(bareCpu / clientCpu);
        state.SetIterationTime(clientBatch + bareBatch);
    }
    const double messages = static_cast<double>(state.iterations()) * kMessagesPerBatch;
    state.counters["client_msgs_s"] = messages / clientSeconds;
    state.counters["limit_msgs_s"] = messages / bareSeconds;
    state.counters["ratio"] = median(ratios);
    state.counters["cpu_ratio"] = median(cpuRatios);
}

// The separate runs, with the message log and without.
void separateRun(benchmark::internal::Benchmark* run) {
    run->ArgName("messageLog")
        ->Arg(1)
        ->Arg(0)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MinTime(2.0);
}

BENCHMARK(BM_ClientReceivePath)->Apply(separateRun);
BENCHMARK(BM_PlainSocketRead)->Apply(separateRun);
BENCHMARK(BM_ReceivePathPaired)->Unit(benchmark::kMillisecond)->UseManualTime()->MinTime(4.0);

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
