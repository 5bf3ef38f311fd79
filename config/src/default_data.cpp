#include "tolvane_config/default_data.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QUrl>

#include "tolvane_config/host_executable.h"

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
    // Cut after the executable's last separator, so the file name follows it directly.
    const QString folder = hostExecutableFolder();
    if (folder.isEmpty()) {
        return QString();
    }
    return folder + QStringLiteral("default.data");
}

DefaultData parseDefaultData(const QByteArray& content) {
    DefaultData data;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError || document.isNull() || !document.isObject()) {
        data.status = DefaultDataStatus::NotAnObject;
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
    DefaultData data;
    data.path = defaultDataPath();
    if (data.path.isEmpty()) {
        data.status = DefaultDataStatus::NoPath;
        return data;
    }
    QFile file(data.path);
    if (!file.exists()) {
        data.status = DefaultDataStatus::Missing;
        return data;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        data.status = DefaultDataStatus::Unreadable;
        data.error = file.errorString();
        return data;
    }
    DefaultData parsed = parseDefaultData(file.readAll());
    parsed.path = data.path;
    return parsed;
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
