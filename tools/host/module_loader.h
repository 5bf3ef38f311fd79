#pragma once

#include <QLibrary>
#include <QString>

#include "tolvane/i_liveencoder_net_service.h"

// Finds and loads the module by file name and resolves its one export, as a customer's
// host does; nothing of the module is linked into this program.
class ModuleLoader {
public:
    // The library beside this executable unless TOLVANE_LIBRARY names another file.
    static QString defaultLibraryPath();

    bool load(const QString& path);
    QString errorString() const { return error_; }
    CreateNetServiceFunction createNetService() const { return create_; }

private:
    QLibrary library_;
    CreateNetServiceFunction create_ = nullptr;
    QString error_;
};
