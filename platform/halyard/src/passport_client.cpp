#include "passport_client.h"

#include <QDateTime>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>
#include <algorithm>

#include "halyard/auth_code.h"
#include "halyard/client_setup.h"
#include "tolvane_config/default_data.h"
#include "tolvane_config/operation_abort.h"
#include "tolvane_config/send_once_device.h"

namespace halyard {

namespace {

const char* const kPassportBases[] = {
    "https://passport.tolvane.example/",
    "http://passport.live.tolvane.example/",
    "http://passport.trunk.tolvane.example/",
    "http://passport.stress.tolvane.example/",
};

constexpr int kPassportBaseKind = 0;

QString sortedQueryText(FormItems items) {
    std::sort(items.begin(), items.end());
    QStringList pairs;
    for (const auto& item : items) {
        pairs << item.first + QLatin1Char('=') + item.second;
    }
    return pairs.join(QLatin1Char('&'));
}

QByteArray formBody(const FormItems& form) {
    QByteArray body;
    for (const auto& item : form) {
        if (!body.isEmpty()) {
            body += '&';
        }
        body += item.first.toUtf8() + '=' + item.second.toUtf8().toPercentEncoding();
    }
    return body;
}

QString sign(const QString& text) {
    char* code = GenerateAuthCode(text.toUtf8().constData());
    const QString auth = code != nullptr ? QString::fromUtf8(code) : QString();
    FreeAuthCode(code);
    return auth;
}

// Trusts an extra certificate authority (the simulator's) when TOLVANE_CA_FILE names one.
void addExtraTrust(QNetworkRequest& request) {
    const QByteArray caFile = qgetenv("TOLVANE_CA_FILE");
    if (caFile.isEmpty()) {
        return;
    }
    QFile file(QFile::decodeName(caFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
    ssl.addCaCertificates(QSslCertificate::fromData(file.readAll(), QSsl::Pem));
    request.setSslConfiguration(ssl);
}

}  // namespace

QString passportBaseAddress() {
    const tolvane::config::DefaultData data = tolvane::config::readDefaultData();
    const int environment = data.environment < 0 || data.environment > 3 ? 0 : data.environment;
    return tolvane::config::applyBaseOverride(data.endpoints, kPassportBaseKind,
                                              QString::fromLatin1(kPassportBases[environment]));
}

QString passportSignatureText(const QString& path, const QString& aid, qint64 time,
                              const FormItems& form) {
    QString text = path + QStringLiteral("?aid=") + aid + QStringLiteral("&time=") +
                   QString::number(time) + QStringLiteral("%s");
    const QString formText = sortedQueryText(form);
    if (!formText.isEmpty()) {
        text += QLatin1Char('&') + formText;
    }
    return text;
}

PassportAnswer postToPassport(const QString& path, const FormItems& form, int timeoutMs) {
    FormItems items = form;
    items.append({QStringLiteral("client_version"), clientVersion()});
    const QString aid = QStringLiteral("vxtool");
    const qint64 time = QDateTime::currentSecsSinceEpoch();
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("aid"), aid);
    query.addQueryItem(QStringLiteral("time"), QString::number(time));
    query.addQueryItem(QStringLiteral("auth"), sign(passportSignatureText(path, aid, time, items)));
    QUrl url(passportBaseAddress() + path);
    url.setQuery(query);

    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    addExtraTrust(request);

    QNetworkAccessManager manager;
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(&manager, &QNetworkAccessManager::finished, &loop, &QEventLoop::quit);
    // Every passport call is a POST that must not reach the service twice (a QR poll answered
    // on a second sending would log in behind the caller's back): Qt resends a request whose
    // connection closed before the answer, and this body refuses the rewind that needs.
    auto* body = tolvane::net::SendOnceDevice::fromBytes(formBody(items));
    QNetworkReply* reply = manager.post(request, body);
    body->setParent(reply);
    // The owner of this thread may abandon the call (a host closing), as it may the module's.
    const tolvane::net::OperationAbort abandon;
    QTimer abandonCheck;
    abandon.quitOnRequest(loop, abandonCheck);
    timer.start(timeoutMs);
    if (!abandon.requested()) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }

    PassportAnswer answer;
    if (reply->isFinished()) {
        answer.httpStatus = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        answer.answered = answer.httpStatus != 0;
        answer.body = reply->readAll();
    } else {
        reply->abort();
    }
    delete reply;
    return answer;
}

}  // namespace halyard
