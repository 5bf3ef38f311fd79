#include "net/easy_net_manager.h"

#include <QEventLoop>
#include <QFile>
#include <QHttpMultiPart>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QPointer>
#include <QSslConfiguration>
#include <QStringList>
#include <QTimer>
#include <algorithm>
#include <memory>

#include "log/log_writer.h"
#include "tolvane_config/operation_abort.h"
#include "tolvane_config/send_once_device.h"

using tolvane::log::kMainLog;
using tolvane::log::writeLine;

namespace {

constexpr int kTimeoutError = -6;

// Aborts the reply once its body passes the limit; the abort ends it as "operation canceled".
// The read buffer holds one byte more than the limit, so Qt's network thread stops reading
// there instead of going on at loopback speed until this thread sees the data.
void limitReplySize(QNetworkReply* reply) {
    reply->setReadBufferSize(EasyNetManager::kMaxReplyBytes + 1);
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply] {
        if (reply->bytesAvailable() > EasyNetManager::kMaxReplyBytes && reply->isRunning()) {
            writeLine(kMainLog, QStringLiteral("reply larger than %1 bytes refused: %2")
                                    .arg(EasyNetManager::kMaxReplyBytes)
                                    .arg(reply->url().toDisplayString()));
            reply->abort();
        }
    });
}

QByteArray madeUpReply(int error, const QString& message, const QByteArray& data) {
    const QJsonObject envelope{
        {QStringLiteral("error"), error},
        {QStringLiteral("msg"), message},
        {QStringLiteral("data"), QString::fromUtf8(data)},
    };
    return QJsonDocument(envelope).toJson(QJsonDocument::Compact);
}

void appendMissing(QList<QSslCertificate>& list, const QList<QSslCertificate>& more) {
    for (const QSslCertificate& certificate : more) {
        if (!list.contains(certificate)) {
            list.append(certificate);
        }
    }
}

// The authorities to trust when TOLVANE_CA_FILE names a PEM file; empty otherwise, which
// leaves Qt's default configuration in charge.
QList<QSslCertificate> authoritiesWithExtraFile() {
    const QString path = qEnvironmentVariable("TOLVANE_CA_FILE");
    if (path.isEmpty()) {
        return {};
    }
    QFile file(path);
    QList<QSslCertificate> extra;
    if (file.open(QIODevice::ReadOnly)) {
        extra = QSslCertificate::fromData(file.readAll(), QSsl::Pem);
    }
    if (extra.isEmpty()) {
        writeLine(kMainLog, QStringLiteral("TOLVANE_CA_FILE holds no certificate: ") + path);
        return {};
    }
    // Any explicit list turns off Qt's on-demand loading of the system's roots, so the list
    // must carry them itself or valid public certificates would stop verifying.
    QList<QSslCertificate> all = QSslConfiguration::defaultConfiguration().caCertificates();
    appendMissing(all, QSslConfiguration::systemCaCertificates());
    appendMissing(all, extra);
    return all;
}

}  // namespace

EasyNetManager::EasyNetManager() : QObject(nullptr), caCertificates_(authoritiesWithExtraFile()) {}

EasyNetManager::~EasyNetManager() = default;

bool EasyNetManager::get(const QNetworkRequest& request, QByteArray& reply, int timeoutMs) {
    return sendBlocking(
        QNetworkAccessManager::GetOperation, request,
        [](QNetworkAccessManager& manager, const QNetworkRequest& ready) {
            return manager.get(ready);
        },
        reply, timeoutMs);
}

bool EasyNetManager::post(const QNetworkRequest& request, const QByteArray& body, QByteArray& reply,
                          int timeoutMs) {
    if (aborting_.load()) {
        return false;
    }
    QNetworkRequest form(request);
    form.setHeader(QNetworkRequest::ContentTypeHeader,
                   QByteArrayLiteral("application/x-www-form-urlencoded"));
    writeLine(kMainLog, QStringLiteral("post:%1").arg(QString::fromUtf8(body)));
    return sendBlocking(
        QNetworkAccessManager::PostOperation, form,
        [&body](QNetworkAccessManager& manager, const QNetworkRequest& ready) {
            // A QByteArray body would let Qt rewind it and send the request a second time.
            auto* device = tolvane::net::SendOnceDevice::fromBytes(body);
            QNetworkReply* sent = manager.post(ready, device);
            device->setParent(sent);
            return sent;
        },
        reply, timeoutMs);
}

bool EasyNetManager::postMultipart(const QNetworkRequest& request,
                                   const std::vector<tolvane::net::FormPart>& parts,
                                   QByteArray& reply, int timeoutMs, QString* unopenedFile) {
    if (aborting_.load()) {
        return false;
    }
    QString unopened;
    std::unique_ptr<QHttpMultiPart> form = tolvane::net::makeFormData(parts, unopened);
    if (!form) {
        writeLine(kMainLog, QStringLiteral("post image open failed: %1").arg(unopened));
        if (unopenedFile != nullptr) {
            *unopenedFile = unopened;
        }
        return false;
    }
    return sendBlocking(
        QNetworkAccessManager::PostOperation, request,
        [&form](QNetworkAccessManager& manager, const QNetworkRequest& ready) {
            QNetworkReply* sent = manager.post(ready, form.get());
            form.release()->setParent(sent);
            return sent;
        },
        reply, timeoutMs);
}

bool EasyNetManager::sendBlocking(QNetworkAccessManager::Operation operation,
                                  const QNetworkRequest& request, const Dispatch& dispatch,
                                  QByteArray& reply, int timeoutMs) {
    if (aborting_.load()) {
        return false;
    }
    QEventLoop loop;
    if (!registerLoop(&loop)) {
        return false;
    }
    reply.clear();

    QNetworkAccessManager manager;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setInterval(std::max(0, timeoutMs));
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(&manager, &QNetworkAccessManager::finished, &loop, &QEventLoop::quit);
    connect(&manager, &QNetworkAccessManager::sslErrors, this, &EasyNetManager::onsslErrors,
            Qt::DirectConnection);

    // The owner of this thread may ask for the operation to be abandoned; nothing signals it, so
    // the flag is looked at while waiting.
    const tolvane::net::OperationAbort abandon;
    QTimer abandonCheck;
    abandon.quitOnRequest(loop, abandonCheck);

    const bool isPost = operation == QNetworkAccessManager::PostOperation;
    QNetworkReply* pending = dispatch(manager, withTrust(request));
    limitReplySize(pending);
    timer.start();
    if (!abandon.requested()) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    unregisterLoop(&loop);
    abandonCheck.stop();

    const QString url = QStringLiteral("url:") + request.url().toDisplayString();
    if (!timer.isActive()) {
        writeLine(kMainLog, QStringLiteral("QNetworkAccessManager timeout %1").arg(timeoutMs));
        writeLine(kMainLog, url);
        reply = madeUpReply(kTimeoutError, QStringLiteral("[Error] 网络请求超时"), reply);
        return false;
    }
    timer.stop();
    if (!pending->isFinished()) {
        // Only stop() or the thread's owner end the loop before the reply or the timer; the
        // abort turns the request into an ordinary "operation canceled" network error below.
        pending->abort();
    }
    if (pending->error() == QNetworkReply::NoError) {
        reply = pending->readAll();
        return true;
    }
    const int code = pending->error();
    const QByteArray data = pending->isOpen() ? pending->readAll() : QByteArray();
    writeLine(kMainLog, (isPost ? QStringLiteral("QNetworkAccessManager NetworkError error:%1")
                                : QStringLiteral("QNetworkAccessManager get NetworkError:%1"))
                            .arg(code));
    writeLine(kMainLog, url);
    if (!data.isEmpty()) {
        writeLine(kMainLog, QString::fromUtf8(data));
    }
    reply = madeUpReply(code, QStringLiteral("[Error] 网络请求失败"), data);
    return false;
}

void EasyNetManager::getAsync(const QNetworkRequest& request, QObject* receiver,
                              ReplyHandler handler, int timeoutMs) {
    if (aborting_.load()) {
        return;
    }
    auto* manager = new QNetworkAccessManager(this);
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(manager, &QNetworkAccessManager::sslErrors, this, &EasyNetManager::onsslErrors);

    struct Delivery {
        QPointer<QObject> receiver;
        ReplyHandler handler;
    };
    auto delivery = std::make_shared<Delivery>(Delivery{receiver, std::move(handler)});
    // Queued even on the receiver's own thread, so the handler never runs inside this
    // client's slots and may freely delete the client or start new requests.
    auto deliver = [this, delivery](const QByteArray& body) {
        if (aborting_.load() || delivery->receiver.isNull() || !delivery->handler) {
            return;
        }
        QMetaObject::invokeMethod(
            delivery->receiver.data(),
            [handler = std::move(delivery->handler), body] { handler(body); },
            Qt::QueuedConnection);
    };

    QNetworkReply* pending = manager->get(withTrust(request));
    limitReplySize(pending);
    // Whichever completion comes first cuts the other one off; both run on this thread.
    connect(manager, &QNetworkAccessManager::finished, this,
            [this, manager, timer, deliver](QNetworkReply* finished) {
                timer->stop();
                disconnect(timer, nullptr, this, nullptr);
                disconnect(manager, nullptr, this, nullptr);
                const QByteArray body = finished->error() == QNetworkReply::NoError
                                            ? finished->readAll()
                                            : QByteArray();
                finished->deleteLater();
                manager->deleteLater();
                timer->deleteLater();
                deliver(body);
            });
    connect(timer, &QTimer::timeout, this, [this, manager, timer, pending, deliver] {
        disconnect(manager, nullptr, this, nullptr);
        const QByteArray body = pending->readAll();
        pending->deleteLater();
        manager->deleteLater();
        timer->deleteLater();
        deliver(body);
    });
    timer->start(std::max(0, timeoutMs));
}

void EasyNetManager::stop() {
    aborting_.store(true);
    const std::lock_guard<std::mutex> lock(loopsMutex_);
    for (QEventLoop* loop : loops_) {
        // Queued, because stop() may come from another thread, or before the loop runs.
        QMetaObject::invokeMethod(loop, "quit", Qt::QueuedConnection);
    }
}

void EasyNetManager::onsslErrors(QNetworkReply* reply, const QList<QSslError>& errors) {
    if (reply == nullptr) {
        writeLine(kMainLog, QStringLiteral("QSslError, sender is null"));
        return;
    }
    QStringList texts;
    for (const QSslError& error : errors) {
        texts << error.errorString();
    }
    writeLine(kMainLog, QStringLiteral("ssl error url: ") + reply->url().toString());
    writeLine(kMainLog, QStringLiteral("ssl errorInfo: ") + texts.join(QStringLiteral("; ")));
}

bool EasyNetManager::registerLoop(QEventLoop* loop) {
    const std::lock_guard<std::mutex> lock(loopsMutex_);
    // Checked under the lock, so that a stop() racing with this call either sees the loop
    // or is seen here.
    if (aborting_.load()) {
        return false;
    }
    loops_.push_back(loop);
    return true;
}

void EasyNetManager::unregisterLoop(QEventLoop* loop) {
    const std::lock_guard<std::mutex> lock(loopsMutex_);
    loops_.erase(std::remove(loops_.begin(), loops_.end(), loop), loops_.end());
}

QNetworkRequest EasyNetManager::withTrust(const QNetworkRequest& request) const {
    if (caCertificates_.isEmpty()) {
        return request;
    }
    QNetworkRequest trusted(request);
    QSslConfiguration configuration = trusted.sslConfiguration();
    configuration.setCaCertificates(caCertificates_);
    trusted.setSslConfiguration(configuration);
    return trusted;
}
