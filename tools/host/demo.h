#pragma once

#include <QTextStream>

#include "tolvane/i_liveencoder_net_service.h"

class PrintingObserver;

// Walks the broadcast road as far as the module offers it, printing each step.
// Returns the process exit code.
int runDemo(CreateNetServiceFunction createNetService, PrintingObserver& observer,
            QTextStream& out);
