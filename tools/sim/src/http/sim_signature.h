#pragma once

#include <string>

#include "http/sim_records.h"

namespace tolvane::sim {

// Pairs sorted by key, then value (UTF-16 order, as the client sorts), written "k=v" and
// joined with "&"; nothing is percent-encoded.
std::string sortedQueryText(SimPairs pairs);

// The headers a client put there itself: transport headers, "User-Device" and "auth" removed.
SimPairs signedHeaderGroup(const SimPairs& headers);

// What the client must have signed for this rule, and the "auth" value it sent.
struct SimSignature {
    std::string text;      // path?query%s[&extra]
    std::string received;  // the "auth" the request carries
    bool live = false;     // signed with the test-environment secret
};

SimSignature expectedSignature(SimSignRule rule, const std::string& signingPath,
                               const SimRequest& request, int environment);

// Runs the client-base library's signing function over the text.
std::string signText(const std::string& text, bool live);

// Checks the request's "auth" and records the signed text in it; rule None always passes.
bool verifySignature(SimSignRule rule, const std::string& signingPath, SimRequest& request,
                     int environment);

}  // namespace tolvane::sim
