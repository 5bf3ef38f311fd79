#pragma once

#include <QTextStream>

#include "tolvane/i_liveencoder_net_service.h"

class PrintingObserver;

// Walks the broadcast road against the embedded platform simulator, printing each step.
// Returns the process exit code.
int runDemo(CreateNetServiceFunction createNetService, PrintingObserver& observer,
            QTextStream& out);
