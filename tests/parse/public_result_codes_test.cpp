// Hosts compare results with the published names, so each name must hold what the module returns.
#include "tolvane/result_codes.h"

#include <gtest/gtest.h>

#include "barrage/message_dispatch.h"
#include "parse/data_parser.h"
#include "parse/result_codes.h"

namespace {

int32_t mapped(int serverCode) {
    return DataParser::mapServerErrorCode(serverCode);
}

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
        TOLVANE_CODE(kResultOk, mapped(0)),
        TOLVANE_CODE(kResultUnusableReply, tolvane::kUnusableReply),
        TOLVANE_CODE(kResultNoAnswer, tolvane::kNoAnswer),
        TOLVANE_CODE(kResultLoginRefused, mapped(603)),
        TOLVANE_CODE(kResultPlatform101, mapped(101)),
        TOLVANE_CODE(kResultPlatform102, mapped(102)),
        TOLVANE_CODE(kResultLiveRefused, mapped(604)),
        TOLVANE_CODE(kResultLiveRefused, mapped(608)),
        TOLVANE_CODE(kResultPlatform605, mapped(605)),
        TOLVANE_CODE(kResultPlatform612, mapped(612)),
        TOLVANE_CODE(kResultSessionExpired, mapped(606)),
        TOLVANE_CODE(kResultSessionExpired, tolvane::kNoSession),
        TOLVANE_CODE(kResultSessionEnded, mapped(607)),
        TOLVANE_CODE(kResultPlatform10, mapped(10)),
        TOLVANE_CODE(kResultVerificationNeeded, mapped(9)),
        TOLVANE_CODE(kResultQrCodeInvalid, mapped(613)),
        TOLVANE_CODE(kResultWrongSmsCode, mapped(609)),
        TOLVANE_CODE(kResultLongTokenExpired, mapped(120012)),
        TOLVANE_CODE(kResultRemoteLoginNeeded, mapped(130014)),
        TOLVANE_CODE(kResultPlatform618, mapped(618)),
        TOLVANE_CODE(kResultQrCodeWaiting, mapped(130018)),
        TOLVANE_CODE(kResultReplyNotJson, DataParser::kReplyNotJson),
        TOLVANE_CODE(kResultReplyNotObject, DataParser::kReplyNotObject),
        TOLVANE_CODE(kResultReplyWithoutCode, DataParser::kReplyWithoutCode),
        TOLVANE_CODE(kResultReplyCodeNotNumber, DataParser::kReplyCodeNotNumber),
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
