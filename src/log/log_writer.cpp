#include "log/log_writer.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTextStream>
#include <cstring>

#include "log/log_file.h"
#include "log/log_secret_mask.h"
#include "tolvane_config/host_executable.h"

namespace tolvane::log {

namespace {

#ifdef _WIN32
// The system's path keeps its "\\" separators, which the base-name rule cuts at; Qt's own
// applicationFilePath() writes "/".
constexpr QChar kPathSeparator = QLatin1Char('\\');
constexpr BaseNameRule kBaseNameRule = BaseNameRule::Windows;
#else
constexpr QChar kPathSeparator = QLatin1Char('/');
constexpr BaseNameRule kBaseNameRule = BaseNameRule::Posix;
#endif

QString tempLocation() {
    const QString location = QStandardPaths::writableLocation(QStandardPaths::TempLocation);
#ifndef _WIN32
    // Qt resolves the path and so answers nothing for a TMPDIR that does not exist yet; the
    // logs still belong there, and the folder is made with the ones below it.
    if (location.isEmpty()) {
        return QDir::cleanPath(QFile::decodeName(qgetenv("TMPDIR")));
    }
#endif
    return location;
}

}  // namespace

QString executableBaseName(const QString& fullPath, QChar separator, BaseNameRule rule) {
    const int slash = fullPath.lastIndexOf(separator);
    const int dot = fullPath.lastIndexOf(QLatin1Char('.'));
    if (rule == BaseNameRule::Posix) {
        const QString name = fullPath.mid(slash + 1);
        const int nameDot = name.lastIndexOf(QLatin1Char('.'));
        return nameDot > 0 ? name.left(nameDot) : name;
    }
    if (slash < 0 || dot < 0 || dot < slash) {
        return QString();
    }
    return fullPath.mid(slash + 1, dot - slash - 1);
}

QString logDirectoryFor(const QString& tempDir, const QString& baseName) {
    QString dir = tempDir;
    if (!dir.endsWith(QLatin1Char('/')) && !dir.endsWith(QLatin1Char('\\'))) {
        dir += QLatin1Char('/');
    }
    return dir + baseName + QStringLiteral("/loginLog/");
}

QString logFilePath(const QString& logName) {
    const QString temp = tempLocation();
    const QString baseName =
        executableBaseName(tolvane::config::hostExecutablePath(), kPathSeparator, kBaseNameRule);
    const QString dir = logDirectoryFor(temp, baseName);
    if (!ensurePrivateDirectory(temp, {baseName, QStringLiteral("loginLog")})) {
        return QString();  // an unsafe folder: every writer then drops its lines
    }
    // The separator after "loginLog/" is doubled on purpose: existing log readers expect it.
    return dir + QLatin1Char('/') + QDate::currentDate().toString(QStringLiteral("yyyyMMdd_")) +
           logName;
}

void writeTimePrefix(char* out) {
    // Converting to local time reads the time-zone file each call; one conversion a second
    // per thread is enough, because only the milliseconds change within it.
    constexpr std::size_t kHeadLength = 10;  // "[HH:mm:ss."
    thread_local qint64 cachedSecond = -1;
    thread_local char cachedHead[kHeadLength];
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 second = now / 1000;
    if (second != cachedSecond) {
        const QByteArray head = QDateTime::fromMSecsSinceEpoch(second * 1000)
                                    .toString(QStringLiteral("[HH:mm:ss."))
                                    .toLatin1();
        std::memcpy(cachedHead, head.constData(), kHeadLength);
        cachedSecond = second;
    }
    const int millis = static_cast<int>(now % 1000);
    std::memcpy(out, cachedHead, kHeadLength);
    out[10] = static_cast<char>('0' + millis / 100);
    out[11] = static_cast<char>('0' + millis / 10 % 10);
    out[12] = static_cast<char>('0' + millis % 10);
    out[13] = ']';
    out[14] = ' ';
}

QString timePrefix() {
    char prefix[kTimePrefixLength];
    writeTimePrefix(prefix);
    return QString::fromLatin1(prefix, static_cast<int>(kTimePrefixLength));
}

void writeLine(const QString& logName, const QString& message) {
    QFile file;
    if (!openForAppend(file, logFilePath(logName))) {
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << timePrefix() << maskSecrets(message) << '\n';
}

QString banner(const QString& qualifiedName) {
    return QStringLiteral("call function: %1 -----------------").arg(qualifiedName);
}

void writeBanner(const QString& qualifiedName) {
    writeLine(kMainLog, banner(qualifiedName));
}

}  // namespace tolvane::log
