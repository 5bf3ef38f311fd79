#include "log/persistent_log_writer.h"

#include "log/log_file.h"
#include "log/log_secret_mask.h"
#include "log/log_writer.h"

namespace tolvane::log {

PersistentLogWriter::~PersistentLogWriter() {
    close();
}

bool PersistentLogWriter::open(const QString& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!openForAppend(file_, path)) {
        return false;
    }
    appendLine({});
    appendLine({});
    flushLines();
    return true;
}

void PersistentLogWriter::write(const QString& message) {
    const QByteArray utf8 = maskSecrets(message).toUtf8();
    writeUtf8(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

void PersistentLogWriter::writeUtf8(std::string_view message) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!file_.isOpen()) {
        return;
    }
    appendLine(message);
    const bool sixth = ++linesSinceFlush_ == kLinesPerFlush;
    if (sixth) {
        linesSinceFlush_ = 0;
    }
    if (sixth || policy_ == FlushPolicy::EveryLine) {
        flushLines();
    }
}

void PersistentLogWriter::appendLine(std::string_view message) {
    const std::size_t at = lines_.size();
    lines_.resize(at + kTimePrefixLength);
    writeTimePrefix(&lines_[at]);
    lines_.append(message);
    lines_.push_back('\n');
}

void PersistentLogWriter::flushLines() {
    if (!lines_.empty()) {
        // A line that cannot be written is lost, as a log line may be.
        file_.write(lines_.data(), static_cast<qint64>(lines_.size()));
        lines_.clear();
    }
}

void PersistentLogWriter::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (file_.isOpen()) {
        flushLines();
        file_.close();
    }
}

}  // namespace tolvane::log
