#pragma once

#include <QString>

namespace tolvane {

// Marketing name of a Windows version number pair; "Unknown" for anything else.
QString windowsNameForVersion(int major, int minor);

// Name of the running operating system, computed once per process.
QString osName();

}  // namespace tolvane
