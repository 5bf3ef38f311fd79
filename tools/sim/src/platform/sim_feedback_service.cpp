#include "platform/sim_feedback_service.h"

#include <QJsonObject>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"
#include "platform/sim_caller.h"

namespace tolvane::sim {

void SimFeedbackBox::add(SimFeedback feedback) {
    std::lock_guard<std::mutex> lock(mutex_);
    reports_.push_back(std::move(feedback));
}

std::vector<SimFeedback> SimFeedbackBox::all() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return reports_;
}

std::optional<SimFeedback> SimFeedbackBox::last() const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (reports_.empty()) {
        return std::nullopt;
    }
    return reports_.back();
}

namespace {

SimReply reportMessage(const SimPlatformState& state, SimFeedbackBox& box,
                       const SimRequest& request) {
    const SimCaller caller =
        identifyCaller(state, request.queryValue("time"), request.formValue("token"));
    if (!caller.account) {
        return caller.refusal;
    }
    SimFeedback feedback{caller.account->uid, request.form, {}};
    for (const SimUpload& upload : request.uploads) {
        if (upload.name == "feed_img") {
            feedback.images.push_back(upload);
        }
    }
    const int count = static_cast<int>(feedback.images.size());
    box.add(std::move(feedback));
    return okReply(QJsonObject{{"images", count}});
}

}  // namespace

void addFeedbackRoutes(SimHttpServer& server, SimPlatformState& state, SimFeedbackBox& box) {
    SimPlatformState* s = &state;
    SimFeedbackBox* b = &box;
    // The platform signs this upload over a name one letter shorter than its path.
    server.routes().add({"POST", SimAddressTable::Host, 0, "/api/v1/report_message",
                         "api/v1/report_messag", SimSignRule::CommonLists,
                         [s, b](const SimRequest& r) { return reportMessage(*s, *b, r); }});
}

}  // namespace tolvane::sim
