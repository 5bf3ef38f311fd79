#pragma once

#include <QStringList>
#include <QTextStream>

#include "tolvane/i_liveencoder_net_service.h"

class PrintingObserver;

// Walks the broadcast road against the embedded platform simulator, printing each step; args
// may ask for a slow line in between. Returns the process exit code.
int runDemo(CreateNetServiceFunction createNetService, PrintingObserver& observer, QStringList args,
            QTextStream& out, QTextStream& err);
