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
    file_.flush();
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
    if (policy_ == FlushPolicy::EveryLine) {
        file_.flush();
    }
    if (++linesSinceFlush_ > flushThreshold_) {
        file_.flush();
        linesSinceFlush_ = 0;
    }
}

void PersistentLogWriter::appendLine(std::string_view message) {
    // One reused buffer and one write per line keep the per-message cost to copies.
    line_.assign(timePrefixUtf8().constData(), kTimePrefixLength);
    line_.append(message);
    line_.push_back('\n');
    file_.write(line_.data(), static_cast<qint64>(line_.size()));
}

void PersistentLogWriter::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (file_.isOpen()) {
        file_.flush();
        file_.close();
    }
}

}  // namespace tolvane::log
