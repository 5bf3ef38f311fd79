#pragma once

#include <QByteArray>
#include <QIODevice>

namespace tolvane::net {

// A request body that can be read once, front to back, and never rewound.
//
// Qt's HTTP stack silently sends a request again when the server closes the connection after
// reading it, and rewinds the body device first; Qt never rewinds it before the first sending.
// With this device as the body that rewind fails, so the request ends with
// QNetworkReply::ContentReSendError instead of reaching the server a second time. It reports
// itself random-access with a size, so that Qt streams it with a Content-Length instead of
// buffering it whole, and it is not a QBuffer, whose bytes Qt would copy and rewind itself.
class SendOnceDevice : public QIODevice {
    Q_OBJECT

public:
    // Takes ownership of the source, which must be open for reading and at its start.
    explicit SendOnceDevice(QIODevice* source, QObject* parent = nullptr);
    static SendOnceDevice* fromBytes(const QByteArray& bytes, QObject* parent = nullptr);

    bool isSequential() const override { return false; }
    qint64 size() const override;
    bool seek(qint64 position) override;
    bool reset() override { return false; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    QIODevice* source_;
};

}  // namespace tolvane::net
