#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Codes of the anchor-query services' own refusals, beside those of sim_caller.h.
namespace anchor_codes {
constexpr int kUnknownRoom = 4301;       // "rid" is not a positive room id
constexpr int kNotBlocked = 4302;        // del_black: the uid is not on the room's list
constexpr int kNotYourRoom = 4303;       // del_black: "room_id" is not the caller's room
constexpr int kNoLocation = 4304;        // getAnchorPoi with 1 before any location was reported
constexpr int kBadLocationFlag = 4305;   // "isAllowPoi" other than 0 or 1
constexpr int kBadBizType = 4306;        // room_black: "biz_type" other than 13
constexpr int kUnknownAppCode = 4307;    // the customer-service host knows no such app
constexpr int kUnusableLocation = 4308;  // createAnchorPoi: no city, or coordinates not numbers
}  // namespace anchor_codes

// Adds the anchor's queries: followers, guild, location, identity link, hover card, the
// room's black list and the customer-service entry.
void addAnchorQueryRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim
