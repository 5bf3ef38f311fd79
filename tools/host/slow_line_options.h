#pragma once

#include <QStringList>

#include "sim_environment.h"

// Takes "--latency MS" and "--bandwidth KBPS" from the front of args, for an embedded simulator
// behind a relay that imitates a slow line; false when a value is not a number.
inline bool takeSlowLine(QStringList& args, tolvane::sim::SimEnvironment::Options& options) {
    while (args.size() >= 2 && (args.first() == QStringLiteral("--latency") ||
                                args.first() == QStringLiteral("--bandwidth"))) {
        const bool latency = args.takeFirst() == QStringLiteral("--latency");
        bool ok = false;
        const int value = args.takeFirst().toInt(&ok);
        if (!ok || value < 0) {
            return false;
        }
        (latency ? options.link.latencyMs : options.link.bandwidthKbps) = value;
    }
    return true;
}
