#pragma once

#include <QByteArray>
#include <QString>

namespace tolvane {

// The configuration file beside the host executable, or the one TOLVANE_DEFAULT_DATA names.
QString defaultDataPath();

// Environment index from the content of default.data: the number under "app.domain",
// 0 (production) for anything else. Out-of-range numbers are kept as they are.
int parseEnvironment(const QByteArray& content);

// Reads and parses the configuration file; 0 when it is missing or unreadable.
int readEnvironment();

// Environment index as every address lookup uses it: out of range means production.
inline int clampEnvironment(int environment) {
    return environment < 0 || environment > 3 ? 0 : environment;
}

}  // namespace tolvane
