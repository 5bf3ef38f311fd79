#include "log/log_file.h"

#include <QDir>

#include <cerrno>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace tolvane::log {

namespace {
// Unbuffered: every writer gathers its lines itself and hands them over in one write, which
// QFile's own buffer would only copy once more.
constexpr QIODevice::OpenMode kAppendMode =
    QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text | QIODevice::Unbuffered;
}  // namespace

#ifndef _WIN32

bool ensurePrivateDirectory(const QString& trustedRoot, const QStringList& components) {
    // A temporary location that does not exist yet is made too; it is the user's own choice
    // (TMPDIR), so it gets the usual permissions and none of the checks below.
    if (!QDir().mkpath(trustedRoot)) {
        return false;
    }
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
        // Opened without following a link, so the checks and the mode change below concern
        // the folder itself and not what a link planted in its place points to.
        const int fd = ::open(native.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0) {
            return false;
        }
        struct stat info {};
        const bool ours =
            ::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::geteuid();
        // A folder that an older version left open to others is closed to them now.
        const bool closed = ours && ((info.st_mode & 077) == 0 || ::fchmod(fd, 0700) == 0);
        ::close(fd);
        if (!closed) {
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
    if (!file.open(fd, kAppendMode, QFileDevice::AutoCloseHandle)) {
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
    return file.open(kAppendMode);
}

#endif

}  // namespace tolvane::log
