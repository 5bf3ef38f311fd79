#include "service/environment.h"

#include <QStringList>

#include "log/log_writer.h"

namespace tolvane {

int readEnvironment() {
    const config::DefaultData data = config::readDefaultData();
    const QString unread = describeUnreadDefaultData(data);
    if (!unread.isEmpty()) {
        log::writeLine(log::kMainLog, unread);
    }
    return data.environment;
}

QString describeUnreadDefaultData(const config::DefaultData& data) {
    QString what;
    switch (data.status) {
        case config::DefaultDataStatus::Read:
            return QString();
        case config::DefaultDataStatus::NoPath:
            what = QStringLiteral("the host executable's folder is unknown");
            break;
        case config::DefaultDataStatus::Missing:
            what = QStringLiteral("no file at ") + data.path;
            break;
        case config::DefaultDataStatus::Unreadable:
            what = QStringLiteral("cannot read %1 (%2)").arg(data.path, data.error);
            break;
        case config::DefaultDataStatus::NotAnObject:
            what = data.path + QStringLiteral(" is not a JSON object");
            break;
    }
    return QStringLiteral("default.data: %1, environment %2").arg(what).arg(data.environment);
}

QString describeRedirection(const config::EndpointOverrides& overrides) {
    if (overrides.isEmpty()) {
        return QString();
    }
    QStringList parts;
    if (!overrides.origin.isEmpty()) {
        parts << QStringLiteral("origin ") + overrides.origin;
    }
    for (auto it = overrides.base.cbegin(); it != overrides.base.cend(); ++it) {
        parts << QStringLiteral("base %1 %2").arg(it.key()).arg(it.value());
    }
    for (auto it = overrides.host.cbegin(); it != overrides.host.cend(); ++it) {
        parts << QStringLiteral("host %1 %2").arg(it.key()).arg(it.value());
    }
    return QStringLiteral("default.data endpoints: ") + parts.join(QStringLiteral(", "));
}

}  // namespace tolvane
