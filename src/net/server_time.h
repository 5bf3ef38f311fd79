#pragma once

namespace tolvane::net {

// Failed server-time replies so far in this process, shared by every service and never
// reset; after more than 101 of them the local clock stands in for the platform's.
int& serverTimeFailureCount();

constexpr int kServerTimeFailuresBeforeFallback = 100;
constexpr int kServerTimeRetryDelayMs = 100;

}  // namespace tolvane::net
