#include "service/persistent_log_writer.h"

#include "service/log_file.h"
#include "service/log_writer.h"

namespace tolvane::log {

PersistentLogWriter::~PersistentLogWriter() {
    close();
}

bool PersistentLogWriter::open(const QString& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!openForAppend(file_, path)) {
        return false;
    }
    stream_.setDevice(&file_);
    stream_.setCodec("UTF-8");
    const QString prefix = timePrefix();
    stream_ << prefix << Qt::endl << prefix << Qt::endl;
    return true;
}

void PersistentLogWriter::write(const QString& message) {
    const QString prefix = timePrefix();
    std::lock_guard<std::mutex> lock(mutex_);
    if (stream_.device() == nullptr) {
        return;
    }
    stream_ << prefix << message << Qt::endl;
    if (++linesSinceFlush_ > flushThreshold_) {
        stream_.flush();
        linesSinceFlush_ = 0;
    }
}

void PersistentLogWriter::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stream_.device() != nullptr) {
        stream_.flush();
        stream_.setDevice(nullptr);
    }
    file_.close();
}

}  // namespace tolvane::log
