#include "tolvane_config/send_once_device.h"

#include <QBuffer>

namespace tolvane::net {

SendOnceDevice::SendOnceDevice(QIODevice* source, QObject* parent)
    : QIODevice(parent), source_(source) {
    source_->setParent(this);
    // The source buffers already; a second buffer here would only copy the bytes again.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

SendOnceDevice* SendOnceDevice::fromBytes(const QByteArray& bytes, QObject* parent) {
    auto* buffer = new QBuffer;
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    return new SendOnceDevice(buffer, parent);
}

qint64 SendOnceDevice::size() const {
    return source_->size();
}

bool SendOnceDevice::seek(qint64 position) {
    return position == pos() && QIODevice::seek(position);
}

qint64 SendOnceDevice::readData(char* data, qint64 maxSize) {
    return source_->read(data, maxSize);
}

qint64 SendOnceDevice::writeData(const char*, qint64) {
    return -1;
}

}  // namespace tolvane::net
