#include <gtest/gtest.h>

#include "support/vtable_slot.h"

#include <cstdint>
#include <cstring>

#include "corvid/message_client.h"
#include "corvid/message_decoder.h"

// The module calls these objects through vtable slots, so each operation must stay at its
// number; neither class has a virtual destructor, so no double entry shifts them.
namespace {

// clang-format off
#define CLIENT_SLOT(number, method) SlotCase{#method, vtableIndex(&MessageClient::method), number}
#define DECODER_SLOT(number, method) SlotCase{#method, vtableIndex(&MessageDecoder::method), number}
// clang-format on

TEST(CorvidSlots, OperationsSitAtTheirSlots) {
    const SlotCase cases[] = {
        CLIENT_SLOT(0, setServerAddress),
        CLIENT_SLOT(2, login),
        CLIENT_SLOT(4, registerCallbacks),
        CLIENT_SLOT(5, setParameterText),
        CLIENT_SLOT(6, release),
        CLIENT_SLOT(8, sendChatMessage),
        CLIENT_SLOT(13, sendRawMessage),
        CLIENT_SLOT(18, sendGift),
        CLIENT_SLOT(20, requestMemberInfo),
        CLIENT_SLOT(21, setParameterNumberAndText),
        CLIENT_SLOT(27, sendKeepAliveNow),
        CLIENT_SLOT(28, sendRoomText),
        CLIENT_SLOT(30, loginState),
        CLIENT_SLOT(32, sendSubscription),
        CLIENT_SLOT(39, reset),
        DECODER_SLOT(0, destroy),
        DECODER_SLOT(4, decodeShowEnd),
        DECODER_SLOT(9, decodeKeepAlive),
        DECODER_SLOT(10, decodeMemberInfoReply),
        DECODER_SLOT(13, decodeError),
        DECODER_SLOT(29, decodeLoginReply),
        DECODER_SLOT(38, decodeNoticeValue),
        DECODER_SLOT(39, decodeFansBrand),
        DECODER_SLOT(53, classify),
    };
    for (const SlotCase& c : cases) {
        EXPECT_EQ(c.vtableIndex, c.slot) << c.name;
    }
}

}  // namespace
