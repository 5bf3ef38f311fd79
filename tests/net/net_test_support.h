#pragma once

#include <QPair>
#include <QString>
#include <ostream>

#include "halyard/auth_code.h"

// Readable failure messages for the Qt types the net tests compare.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QPair<QString, QString>& pair, std::ostream* os) {
    *os << '(' << pair.first.toStdString() << ", " << pair.second.toStdString() << ')';
}

// What the signing library returns for a signature string, computed without the module's code.
inline QString expectedAuth(const QString& signatureText, bool live = false) {
    const QByteArray utf8 = signatureText.toUtf8();
    char* code = live ? GenerateAuthCodeLive(utf8.constData()) : GenerateAuthCode(utf8.constData());
    const QString result = QString::fromUtf8(code);
    FreeAuthCode(code);
    return result;
}
