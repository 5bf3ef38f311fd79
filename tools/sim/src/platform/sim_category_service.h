#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Codes of the category services' own refusals, beside those of sim_caller.h.
namespace category_codes {
constexpr int kNotVoice = 1;            // the voice check's "no"
constexpr int kUnknownCategory = 4101;  // no such cid2/cid3 pair
constexpr int kUnknownTag = 4102;       // the tag is not one of the category's
constexpr int kUnknownRoom = 4103;      // "rid" names no room
}  // namespace category_codes

// Adds the category and tag services: the tree, the extended list, the room's category and
// tag, the voice check and the game report.
void addCategoryRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim
