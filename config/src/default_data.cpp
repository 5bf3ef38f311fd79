#include "tolvane_config/default_data.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QUrl>

namespace tolvane::config {

namespace {

QMap<int, QString> readKindTable(const QJsonObject& object) {
    QMap<int, QString> table;
    for (auto it = object.begin(); it != object.end(); ++it) {
        bool ok = false;
        const int kind = it.key().toInt(&ok);
        if (ok && it.value().isString()) {
            table.insert(kind, it.value().toString());
        }
    }
    return table;
}

// "https://host.example/api/v1/" -> "/api/v1/"
QString pathPart(const QString& address) {
    const QUrl url(address);
    return url.path(QUrl::FullyEncoded);
}

}  // namespace

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
    if (executable.isEmpty()) {
        return QString();
    }
    return QFileInfo(executable).path() + QStringLiteral("/default.data");
}

DefaultData parseDefaultData(const QByteArray& content) {
    DefaultData data;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError || document.isNull() || !document.isObject()) {
        return data;
    }
    data.root = document.object();
    const QJsonValue domain = data.root.value(QStringLiteral("app.domain"));
    data.environment = domain.isDouble() ? domain.toInt() : 0;
    const QJsonObject endpoints = data.root.value(QStringLiteral("endpoints")).toObject();
    data.endpoints.origin = endpoints.value(QStringLiteral("origin")).toString();
    while (data.endpoints.origin.endsWith(QLatin1Char('/'))) {
        data.endpoints.origin.chop(1);
    }
    data.endpoints.base = readKindTable(endpoints.value(QStringLiteral("base")).toObject());
    data.endpoints.host = readKindTable(endpoints.value(QStringLiteral("host")).toObject());
    return data;
}

DefaultData readDefaultData() {
    const QString path = defaultDataPath();
    if (path.isEmpty()) {
        return DefaultData();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return DefaultData();
    }
    return parseDefaultData(file.readAll());
}

QString applyBaseOverride(const EndpointOverrides& overrides, int kind, const QString& cell) {
    if (overrides.base.contains(kind)) {
        return overrides.base.value(kind);
    }
    if (cell.isEmpty() || overrides.origin.isEmpty()) {
        return cell;
    }
    return overrides.origin + pathPart(cell);
}

QString applyHostOverride(const EndpointOverrides& overrides, int kind, const QString& cell) {
    if (overrides.host.contains(kind)) {
        return overrides.host.value(kind);
    }
    if (cell.isEmpty() || overrides.origin.isEmpty()) {
        return cell;
    }
    return overrides.origin;
}

}  // namespace tolvane::config
