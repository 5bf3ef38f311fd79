#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <mutex>
#include <string>
#include <string_view>

namespace tolvane::log {

// Keeps one log file open; safe to call from several threads.
class PersistentLogWriter {
public:
    PersistentLogWriter() = default;
    ~PersistentLogWriter();
    PersistentLogWriter(const PersistentLogWriter&) = delete;
    PersistentLogWriter& operator=(const PersistentLogWriter&) = delete;

    // Opens for appending and writes two empty lines that separate sessions in a day's file.
    bool open(const QString& path);
    void write(const QString& message);
    // The same for text that is UTF-8 already (received messages), without converting it.
    void writeUtf8(std::string_view message);
    void close();

private:
    void appendLine(std::string_view message);

    static constexpr std::size_t kTimePrefixLength = 15;  // "[HH:mm:ss.zzz] "
    QFile file_;
    std::string line_;
    std::mutex mutex_;  // std::mutex, so that ThreadSanitizer sees the locking
    int linesSinceFlush_ = 0;
    int flushThreshold_ = 5;
};

}  // namespace tolvane::log
