#pragma once

namespace tolvane {

// Environment index from default.data: the number under "app.domain", 0 (production) for
// anything else. Out-of-range numbers are kept as they are.
int readEnvironment();

// Environment index as every address lookup uses it: out of range means production.
inline int clampEnvironment(int environment) {
    return environment < 0 || environment > 3 ? 0 : environment;
}

}  // namespace tolvane
