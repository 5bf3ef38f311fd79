#pragma once

#include <QString>

#include "tolvane_config/default_data.h"

namespace tolvane {

// Environment index from default.data: the number under "app.domain", 0 (production) for
// anything else. Out-of-range numbers are kept as they are. A file that is missing or cannot be
// read is named in tolvane.log, so that a host that ends up on production knows why.
int readEnvironment();

// That line, such as "default.data: no file at /opt/studio/default.data, environment 0";
// empty when the file was read.
QString describeUnreadDefaultData(const config::DefaultData& data);

// The start-up line that tells a redirected install from a normal one, such as
// "default.data endpoints: origin http://127.0.0.1:40123, base 3 http://..., host 2 http://...";
// empty when default.data redirects nothing.
QString describeRedirection(const config::EndpointOverrides& overrides);

}  // namespace tolvane
