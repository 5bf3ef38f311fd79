// default.data as read from disk, and the address overrides it yields applied to cells.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tolvane_config/default_data.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size > 1 << 20) {
        return 0;
    }
    const QByteArray content(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const tolvane::config::DefaultData parsed = tolvane::config::parseDefaultData(content);
    if (parsed.endpoints.origin.endsWith(QLatin1Char('/'))) {
        std::abort();
    }
    const QString cell = QStringLiteral("https://api.example/api/v1/");
    for (int kind = 0; kind < 12; ++kind) {
        const QString base = tolvane::config::applyBaseOverride(parsed.endpoints, kind, cell);
        const QString host = tolvane::config::applyHostOverride(parsed.endpoints, kind, cell);
        // An empty cell means "no such service"; only a cell of its own may name one.
        const bool ownBase = parsed.endpoints.base.contains(kind);
        const bool ownHost = parsed.endpoints.host.contains(kind);
        if ((!ownBase &&
             !tolvane::config::applyBaseOverride(parsed.endpoints, kind, QString()).isEmpty()) ||
            (!ownHost &&
             !tolvane::config::applyHostOverride(parsed.endpoints, kind, QString()).isEmpty()) ||
            (parsed.endpoints.isEmpty() && (base != cell || host != cell))) {
            std::abort();
        }
    }
    return 0;
}
