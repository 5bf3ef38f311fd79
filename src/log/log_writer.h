#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>

// The module's log files: one per log name and day under the temporary location.
namespace tolvane::log {

inline const QString kMainLog = QStringLiteral("tolvane.log");
inline const QString kRequestLog = QStringLiteral("php.log");
inline const QString kMessageLog = QStringLiteral("msg.log");

// How the log folder's name is cut from the host executable's path.
enum class BaseNameRule {
    // The text between the last separator and the last ".", empty when either is missing or
    // the "." stands before the separator: every Windows executable ends in ".exe".
    Windows,
    // The same, except that a name without a "." (the usual POSIX executable) is taken whole,
    // so that hosts do not all share one folder.
    Posix,
};

QString executableBaseName(const QString& fullPath, QChar separator, BaseNameRule rule);

// Log folder for a temporary location and a base name; pure, creates nothing.
QString logDirectoryFor(const QString& tempLocation, const QString& baseName);

// The day's file for a log name; creates the folders on the way (owner-only on POSIX).
// Empty when a folder on the way is a symbolic link or belongs to someone else.
QString logFilePath(const QString& logName);

// "[HH:mm:ss.zzz] " for now.
QString timePrefix();
constexpr std::size_t kTimePrefixLength = 15;
// The same written to out[0..kTimePrefixLength), without allocating: every received barrage
// message gets one.
void writeTimePrefix(char* out);

// Opens, appends one line, closes. Never reports a failure: the line is then lost.
void writeLine(const QString& logName, const QString& message);

// "call function: <name> -----------------"
QString banner(const QString& qualifiedName);
void writeBanner(const QString& qualifiedName);

}  // namespace tolvane::log
