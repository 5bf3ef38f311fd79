#include "service/environment.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace tolvane {

QString defaultDataPath() {
    const QByteArray overridePath = qgetenv("TOLVANE_DEFAULT_DATA");
    if (!overridePath.isEmpty()) {
        return QFile::decodeName(overridePath);
    }
#ifdef _WIN32
    const QString executable = QCoreApplication::applicationFilePath();
#else
    const QString executable = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
#endif
    const QString dir = QFileInfo(executable).path();
    if (executable.isEmpty() || dir.isEmpty()) {
        return QString();
    }
    return dir + QStringLiteral("/default.data");
}

int parseEnvironment(const QByteArray& content) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError || document.isNull() || !document.isObject()) {
        return 0;
    }
    const QJsonValue domain = document.object().value(QStringLiteral("app.domain"));
    return domain.isDouble() ? domain.toInt() : 0;
}

int readEnvironment() {
    const QString path = defaultDataPath();
    if (path.isEmpty()) {
        return 0;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    return parseEnvironment(file.readAll());
}

}  // namespace tolvane
