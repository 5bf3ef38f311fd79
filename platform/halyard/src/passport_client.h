#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

namespace halyard {

using FormItems = QVector<QPair<QString, QString>>;

struct PassportAnswer {
    bool answered = false;  // false: no HTTP answer within the time-out
    int httpStatus = 0;
    QByteArray body;
};

// Base address of the passport service for the environment default.data selects, with its
// endpoint overrides applied; ends with "/".
QString passportBaseAddress();

// Text the service signs: path?aid=..&time=..%s&<sorted form>.
QString passportSignatureText(const QString& path, const QString& aid, qint64 time,
                              const FormItems& form);

// Signed form POST to path under the passport base; blocks on a local event loop.
PassportAnswer postToPassport(const QString& path, const FormItems& form, int timeoutMs);

}  // namespace halyard
