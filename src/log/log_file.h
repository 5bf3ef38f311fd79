#pragma once

#include <QFile>
#include <QString>
#include <QStringList>

namespace tolvane::log {

// Creates a log folder owner-only and refuses one that is a symbolic link or not ours,
// because the temporary location is shared by every user of the machine.
// Each component below the trusted root (the temporary location) is checked in turn; the root
// itself is created first when it does not exist.
bool ensurePrivateDirectory(const QString& trustedRoot, const QStringList& components);

// Opens a log file for appending (0600 on POSIX, never through a symbolic link).
bool openForAppend(QFile& file, const QString& path);

}  // namespace tolvane::log
