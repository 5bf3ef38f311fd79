#pragma once

#include <QFile>
#include <QString>
#include <QStringList>

#include "log/log_writer.h"

// Lines of today's log file with their time prefixes removed.
inline QStringList readLogMessages(const QString& logName) {
    QFile file(tolvane::log::logFilePath(logName));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    for (QString& line : lines) {
        line.remove(0, QStringLiteral("[HH:mm:ss.zzz] ").size());
    }
    return lines;
}

// Whether today's main log holds the line, without its time prefix.
inline bool mainLogHas(const QString& line) {
    return readLogMessages(tolvane::log::kMainLog).contains(line);
}

// Whether a line of today's log contains the text anywhere.
inline bool logContains(const QString& logName, const QString& text) {
    return !readLogMessages(logName).filter(text).isEmpty();
}
