#include "service/log_file.h"

#include <QDir>

#include <cerrno>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace tolvane::log {

#ifndef _WIN32

bool ensurePrivateDirectory(const QString& trustedRoot, const QStringList& components) {
    QString path = trustedRoot;
    for (const QString& component : components) {
        if (component.isEmpty()) {
            continue;
        }
        path += QLatin1Char('/') + component;
        const QByteArray native = QFile::encodeName(path);
        if (::mkdir(native.constData(), 0700) != 0 && errno != EEXIST) {
            return false;
        }
        struct stat info {};
        if (::lstat(native.constData(), &info) != 0 || !S_ISDIR(info.st_mode) ||
            info.st_uid != ::geteuid()) {
            return false;
        }
    }
    return true;
}

bool openForAppend(QFile& file, const QString& path) {
    const QByteArray native = QFile::encodeName(path);
    const int fd =
        ::open(native.constData(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        return false;
    }
    if (!file.open(fd, QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text,
                   QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    return true;
}

#else

bool ensurePrivateDirectory(const QString& trustedRoot, const QStringList& components) {
    return QDir().mkpath(trustedRoot + QLatin1Char('/') + components.join(QLatin1Char('/')));
}

bool openForAppend(QFile& file, const QString& path) {
    file.setFileName(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text);
}

#endif

}  // namespace tolvane::log
