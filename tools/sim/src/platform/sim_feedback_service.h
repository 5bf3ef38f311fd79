#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "http/sim_records.h"

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// One feedback report as the platform received it: the text items and the attached images.
struct SimFeedback {
    std::string uid;
    SimPairs items;
    std::vector<SimUpload> images;
};

// The reports received so far; safe from server threads and tests at once.
class SimFeedbackBox {
public:
    void add(SimFeedback feedback);
    std::vector<SimFeedback> all() const;
    std::optional<SimFeedback> last() const;

private:
    mutable std::mutex mutex_;
    std::vector<SimFeedback> reports_;
};

// "/api/v1/report_message": a signed multipart upload of text items and "feed_img" images.
void addFeedbackRoutes(SimHttpServer& server, SimPlatformState& state, SimFeedbackBox& box);

}  // namespace tolvane::sim
