#include "service/environment.h"

#include <QStringList>

namespace tolvane {

int readEnvironment() {
    return config::readDefaultData().environment;
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
