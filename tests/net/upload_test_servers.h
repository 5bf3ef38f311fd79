#pragma once

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <memory>

// Answers the first request it reads, on a connection it keeps open; reads the second one
// whole and closes its connection without a word; answers any later one again, so that a
// request the client silently sends a second time would turn the failure into a success.
// Serves on the event loop of the thread that creates it.
class DropsSecondRequest {
public:
    DropsSecondRequest() {
        server_.listen(QHostAddress(QHostAddress::LocalHost), 0);
        QObject::connect(&server_, &QTcpServer::newConnection, [this] {
            while (QTcpSocket* socket = server_.nextPendingConnection()) {
                auto received = std::make_shared<QByteArray>();
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, received] {
                    received->append(socket->readAll());
                    while (takeRequest(*received)) {
                        if (++requests_ == 2) {
                            socket->disconnectFromHost();
                            return;
                        }
                        socket->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
                    }
                });
                QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QUrl url(const QString& path) const {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(server_.serverPort()).arg(path));
    }
    int requests() const { return requests_; }

private:
    // Removes one whole request from the front of the buffer; false while it is incomplete.
    static bool takeRequest(QByteArray& buffer) {
        const int headerEnd = buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0) {
            return false;
        }
        qint64 contentLength = 0;
        for (const QByteArray& line : buffer.left(headerEnd).split('\n')) {
            if (line.toLower().startsWith("content-length:")) {
                contentLength = line.mid(15).trimmed().toLongLong();
            }
        }
        const qint64 total = headerEnd + 4 + contentLength;
        if (buffer.size() < total) {
            return false;
        }
        buffer.remove(0, static_cast<int>(total));
        return true;
    }

    QTcpServer server_;
    int requests_ = 0;
};
