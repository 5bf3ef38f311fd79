#include "tolvane_config/host_executable.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <vector>
#else
#include <QFile>
#endif

namespace tolvane::config {

namespace {

#ifdef _WIN32
constexpr QChar kSeparator = QLatin1Char('\\');
#else
constexpr QChar kSeparator = QLatin1Char('/');
#endif

}  // namespace

#ifdef _WIN32
QString hostExecutablePath() {
    std::vector<wchar_t> buffer(MAX_PATH);
    while (buffer.size() <= 32768) {
        const DWORD length =
            GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            return QString();
        }
        if (length < buffer.size()) {
            return QString::fromWCharArray(buffer.data(), static_cast<int>(length));
        }
        buffer.resize(buffer.size() * 2);  // truncated: try a longer buffer
    }
    return QString();
}
#else
QString hostExecutablePath() {
    return QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
}
#endif

QString hostExecutableFolder() {
    const QString path = hostExecutablePath();
    return path.left(path.lastIndexOf(kSeparator) + 1);
}

}  // namespace tolvane::config
