#pragma once

namespace tolvane {

// Environment index from default.data: the number under "app.domain", 0 (production) for
// anything else. Out-of-range numbers are kept as they are.
int readEnvironment();

}  // namespace tolvane
