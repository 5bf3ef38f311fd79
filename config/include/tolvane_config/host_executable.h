#pragma once

#include <QString>

namespace tolvane::config {

// The full path of the host process's executable as the system writes it, with "\\" separators
// on Windows; empty when the system does not tell. It does not need a QCoreApplication, so a
// host that creates the service before its application object still finds its own folder.
QString hostExecutablePath();

// The folder of that path, cut after its last separator ("C:\\Studio\\" for
// "C:\\Studio\\Studio.exe"); empty when the path has no separator.
QString hostExecutableFolder();

}  // namespace tolvane::config
