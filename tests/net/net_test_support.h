#pragma once

#include <QPair>
#include <QString>
#include <ostream>

#include "support/request_signing.h"

// Readable failure messages for the Qt types the net tests compare.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QPair<QString, QString>& pair, std::ostream* os) {
    *os << '(' << pair.first.toStdString() << ", " << pair.second.toStdString() << ')';
}

// What the signing library returns for a signature string, computed without the module's code.
inline QString expectedAuth(const QString& signatureText, bool live = false) {
    return QString::fromStdString(authCode(signatureText.toUtf8().constData(), live));
}
