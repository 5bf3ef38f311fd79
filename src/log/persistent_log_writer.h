#pragma once

#include <QFile>
#include <QString>
#include <mutex>
#include <string>
#include <string_view>

namespace tolvane::log {

// When a persistent writer's lines reach the file.
enum class FlushPolicy {
    // Every line at once (a reader never misses one), and a second flush after every sixth.
    EveryLine,
    // After every sixth line and on close only: a flush per line would cost a system call for
    // every barrage message.
    EverySixthLine,
};

// Keeps one log file open; safe to call from several threads.
class PersistentLogWriter {
public:
    explicit PersistentLogWriter(FlushPolicy policy = FlushPolicy::EverySixthLine)
        : policy_(policy) {}
    ~PersistentLogWriter();
    PersistentLogWriter(const PersistentLogWriter&) = delete;
    PersistentLogWriter& operator=(const PersistentLogWriter&) = delete;

    // Opens for appending and writes two empty lines that separate sessions in a day's file.
    bool open(const QString& path);
    // Writes the line with its secrets masked.
    void write(const QString& message);
    // The same for text that is UTF-8 already (received messages), without converting it and
    // without masking: received messages carry none of the session's secrets, and this is the
    // barrage path's per-message cost.
    void writeUtf8(std::string_view message);
    void close();

private:
    // Adds the line to the lines not yet handed to the file.
    void appendLine(std::string_view message);
    // Hands every gathered line to the kernel in one write.
    void flushLines();

    QFile file_;
    // The lines since the last flush: gathered here rather than in QFile's buffer, so a flush
    // costs one write and a line a copy.
    std::string lines_;
    std::mutex mutex_;  // std::mutex, so that ThreadSanitizer sees the locking
    const FlushPolicy policy_;
    int linesSinceFlush_ = 0;
    static constexpr int kLinesPerFlush = 6;
};

}  // namespace tolvane::log
