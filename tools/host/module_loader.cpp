#include "module_loader.h"

#include <QCoreApplication>

QString ModuleLoader::defaultLibraryPath() {
    const QByteArray overridePath = qgetenv("TOLVANE_LIBRARY");
    if (!overridePath.isEmpty()) {
        return QString::fromLocal8Bit(overridePath);
    }
    return QCoreApplication::applicationDirPath() + QStringLiteral("/libtolvane.so");
}

bool ModuleLoader::load(const QString& path) {
    library_.setFileName(path);
    if (!library_.load()) {
        error_ = library_.errorString();
        return false;
    }
    create_ = reinterpret_cast<CreateNetServiceFunction>(library_.resolve("CreateNetService"));
    if (create_ == nullptr) {
        error_ = QStringLiteral("CreateNetService not found in %1").arg(path);
        return false;
    }
    return true;
}
