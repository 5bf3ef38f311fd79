#include "service/os_name.h"

#include <QSysInfo>

#ifdef _WIN32
// <lm.h> uses the base types <windows.h> declares, so the order matters.
#include <windows.h>

#include <lm.h>
#endif

namespace tolvane {

QString windowsNameForVersion(int major, int minor) {
    if (major == 10) {
        return QStringLiteral("Windows 10");
    }
    if (major == 5 && minor == 1) {
        return QStringLiteral("Windows XP");
    }
    if (major == 6) {
        switch (minor) {
            case 1:
                return QStringLiteral("Windows 7");
            case 2:
                return QStringLiteral("Windows 8");
            case 3:
                return QStringLiteral("Windows 8.1");
            default:
                break;  // 6.0 is deliberately reported as unknown
        }
    }
    return QStringLiteral("Unknown");
}

namespace {

QString computeOsName() {
#ifdef _WIN32
    LPWKSTA_INFO_100 info = nullptr;
    if (NetWkstaGetInfo(nullptr, 100, reinterpret_cast<LPBYTE*>(&info)) != NERR_Success ||
        info == nullptr) {
        return QStringLiteral("Unknown");
    }
    const QString name = windowsNameForVersion(static_cast<int>(info->wki100_ver_major),
                                               static_cast<int>(info->wki100_ver_minor));
    NetApiBufferFree(info);
    return name;
#else
    return QSysInfo::prettyProductName();
#endif
}

}  // namespace

QString osName() {
    static const QString name = computeOsName();
    return name;
}

}  // namespace tolvane
