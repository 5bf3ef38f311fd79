#pragma once

#include <QFile>
#include <QString>
#include <QTextStream>
#include <mutex>

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
    void close();

private:
    QFile file_;
    QTextStream stream_;
    std::mutex mutex_;  // std::mutex, so that ThreadSanitizer sees the locking
    int linesSinceFlush_ = 0;
    int flushThreshold_ = 5;
};

}  // namespace tolvane::log
