#pragma once

#include <QByteArray>
#include <QList>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QObject>
#include <QSslCertificate>
#include <QSslError>
#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

#include "net/form_part.h"

class QEventLoop;
class QNetworkReply;

// HTTP client on Qt Network: blocking GET and POSTs that wait in a local event loop, and an
// asynchronous GET. Every failure becomes a reply in the platform's envelope shape
// {"error", "msg", "data"} so that callers parse one format.
//
// A POST reaches the server at most once: when the connection breaks after the request went
// out, the call fails (Qt error 205, content re-send) instead of letting Qt send it again.
//
// The client lives on the thread that calls it, which must be able to run a Qt event loop.
// stop() may be called from any thread; it switches the client off for good.
class EasyNetManager : public QObject {
    Q_OBJECT

public:
    // Largest reply body taken in; a longer one is aborted as it arrives (error 5, operation
    // canceled), so a broken server can't make the module hold more than this.
    static constexpr qint64 kMaxReplyBytes = 8 * 1024 * 1024;

    using ReplyHandler = std::function<void(const QByteArray&)>;

    // Reads TOLVANE_CA_FILE once: the PEM certificates it holds are trusted in addition to
    // the system's authorities for every request of this client.
    EasyNetManager();
    ~EasyNetManager() override;
    EasyNetManager(const EasyNetManager&) = delete;
    EasyNetManager& operator=(const EasyNetManager&) = delete;

    // Blocking GET: true with the body, or false with a made-up envelope in reply. After
    // stop() it returns false at once and leaves reply untouched.
    bool get(const QNetworkRequest& request, QByteArray& reply, int timeoutMs);

    // Blocking POST of a form body ("application/x-www-form-urlencoded"), otherwise as get().
    bool post(const QNetworkRequest& request, const QByteArray& body, QByteArray& reply,
              int timeoutMs);

    // Blocking POST of the parts as "multipart/form-data", in order, otherwise as post().
    // Files are streamed from disk while the request goes out. When a file cannot be opened
    // nothing is sent: false, the reply untouched, and the file's path in unopenedFile.
    bool postMultipart(const QNetworkRequest& request,
                       const std::vector<tolvane::net::FormPart>& parts, QByteArray& reply,
                       int timeoutMs, QString* unopenedFile = nullptr);

    // Starts a GET and returns at once. The handler runs exactly once, later, on the
    // receiver's thread: with the body on success, with an empty body on a network error,
    // with whatever arrived so far on time-out. It never runs when the receiver is null or
    // destroyed first, nor when the client was stopped before the request completed.
    void getAsync(const QNetworkRequest& request, QObject* receiver, ReplyHandler handler,
                  int timeoutMs);

    // Switches the client off: later calls send nothing, and blocked callers return.
    void stop();

public slots:
    // Logs the errors only: the connection is refused, since a certificate that does not
    // verify must never be accepted.
    void onsslErrors(QNetworkReply* reply, const QList<QSslError>& errors);

private:
    // Issues the request on the manager; a body it uploads must be owned by the reply.
    using Dispatch = std::function<QNetworkReply*(QNetworkAccessManager&, const QNetworkRequest&)>;

    bool sendBlocking(QNetworkAccessManager::Operation operation, const QNetworkRequest& request,
                      const Dispatch& dispatch, QByteArray& reply, int timeoutMs);
    bool registerLoop(QEventLoop* loop);
    void unregisterLoop(QEventLoop* loop);
    QNetworkRequest withTrust(const QNetworkRequest& request) const;

    std::vector<QEventLoop*> loops_;  // event loops of blocking requests in progress
    std::mutex loopsMutex_;
    std::atomic<bool> aborting_{false};
    QList<QSslCertificate> caCertificates_;  // empty: the default configuration applies
};
