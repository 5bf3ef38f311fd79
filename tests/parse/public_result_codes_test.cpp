// Hosts compare results with the published names; the parser's codes are checked in its tests.
#include "tolvane/result_codes.h"

#include <gtest/gtest.h>

#include "barrage/message_dispatch.h"
#include "parse/result_codes.h"

namespace {

TEST(PublicResultCodes, HoldTheModulesValues) {
    namespace barrage = tolvane::barrage;
    struct Case {
        const char* name;
        int32_t published;
        int32_t module;
    };
#define TOLVANE_CODE(name, module) \
    { #name, tolvane::name, module }
    const Case cases[] = {
        TOLVANE_CODE(kResultUnusableReply, tolvane::kUnusableReply),
        TOLVANE_CODE(kResultNoAnswer, tolvane::kNoAnswer),
        TOLVANE_CODE(kResultSessionExpired, tolvane::kNoSession),
        TOLVANE_CODE(kRoomStatusLoggedIn, barrage::kRoomStatusLoginOk),
        TOLVANE_CODE(kRoomStatusKicked, barrage::kRoomStatusKicked),
        TOLVANE_CODE(kRoomStatusReconnecting, barrage::kRoomStatusReconnecting),
        TOLVANE_CODE(kRoomStatusConnectionLost, barrage::kRoomStatusConnectionLost),
        TOLVANE_CODE(kRoomStatusRejected, barrage::kRoomStatusRejected),
    };
#undef TOLVANE_CODE
    for (const Case& c : cases) {
        EXPECT_EQ(c.published, c.module) << c.name;
    }
}

}  // namespace
