#pragma once

#include <QString>
#include <optional>
#include <string>

#include "http/sim_http_server.h"
#include "http/sim_records.h"
#include "platform/sim_platform_state.h"

namespace tolvane::sim {

namespace content_codes {
constexpr int kSessionExpired = 606;    // the "token" names no live session
constexpr int kTimeOutOfWindow = 1011;  // "time" too far from the server's clock
constexpr int kNoRoom = 4001;           // the account owns no room
}  // namespace content_codes

// How far a signed request's "time" may stray from the server clock, in seconds.
constexpr int kSignedTimeWindowSeconds = 300;

// Who sent a signed request: the account behind its session, or the platform's refusal.
struct SimCaller {
    std::optional<SimAccount> account;
    SimReply refusal;  // meaningful only without an account

    // The account's room id; 0 when it has no room.
    int roomId() const;
};

// Signed requests must carry the platform's time, which is why the module keeps an offset.
bool timeInWindow(const SimPlatformState& state, const std::string& sentTime);
// Refusals carry their text under "data", or "msg" for the services that say so.
SimReply timeRefusal(const QString& messageKey = QStringLiteral("data"));

// The checks every service of a signed-in anchor makes, in the platform's order: first the
// "time" the client signed, then the session its "token" names.
SimCaller identifyCaller(const SimPlatformState& state, const std::string& sentTime,
                         const std::string& token,
                         const QString& messageKey = QStringLiteral("data"));
// As identifyCaller, and the account must own a room.
SimCaller identifyRoomOwner(const SimPlatformState& state, const std::string& sentTime,
                            const std::string& token,
                            const QString& messageKey = QStringLiteral("data"));

// Signed own-URL services send their time in the query and their session in the form; a GET
// carries both in the query.
SimCaller identifyCaller(const SimPlatformState& state, const SimRequest& request,
                         const QString& messageKey = QStringLiteral("data"));
SimCaller identifyRoomOwner(const SimPlatformState& state, const SimRequest& request,
                            const QString& messageKey = QStringLiteral("data"));

// Registers a POST or GET on one of the platform's hosts, signed over `signingPath` with the
// common lists; an empty `signingPath` leaves the route public.
void addHostRoute(SimHttpServer& server, const char* method, int hostKind, const char* path,
                  const char* signingPath, SimHandler handler);

}  // namespace tolvane::sim
