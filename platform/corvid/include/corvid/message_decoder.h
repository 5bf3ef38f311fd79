#pragma once

#include <cstdint>

#include "corvid/message_records.h"

// Reads received barrage texts into fixed records. Operations keep their virtual slots (the
// number before each); slots nobody calls stay as reserved entries so the numbers hold.
// Every decode operation takes a NUL-terminated text, fills the whole record (zeroes where
// the message has nothing), and returns true only when the text is a message of its type
// carrying the items that operation needs. Nothing is read or written outside the text and
// the record, whatever the text holds. Made by CreateVxMessageDecoder, freed by destroy().
class MessageDecoder {
public:
    /* 0 */ virtual void destroy() = 0;
    /* 1 */ virtual void reserved1() {}
    /* 2 */ virtual void reserved2() {}
    /* 3 */ virtual void reserved3() {}
    // "liveend": reason and the ban in hours (finite, within the 32-bit integer range).
    /* 4 */ virtual bool decodeShowEnd(const char* message, int32_t* reason, double* banHours) = 0;
    /* 5 */ virtual void reserved5() {}
    /* 6 */ virtual void reserved6() {}
    /* 7 */ virtual void reserved7() {}
    /* 8 */ virtual void reserved8() {}
    // "keepalive" with "online" and "hot".
    /* 9 */ virtual bool decodeKeepAlive(const char* message, KeepAliveRecord* record) = 0;
    // "memberinfores" with "mc".
    /* 10 */ virtual bool decodeMemberInfoReply(const char* message, MemberInfoRecord* record) = 0;
    /* 11 */ virtual void reserved11() {}
    /* 12 */ virtual void reserved12() {}
    // "error" with "code".
    /* 13 */ virtual bool decodeError(const char* message, int32_t* code) = 0;
    /* 14 */ virtual void reserved14() {}
    /* 15 */ virtual void reserved15() {}
    /* 16 */ virtual void reserved16() {}
    /* 17 */ virtual void reserved17() {}
    /* 18 */ virtual void reserved18() {}
    /* 19 */ virtual void reserved19() {}
    /* 20 */ virtual void reserved20() {}
    /* 21 */ virtual void reserved21() {}
    /* 22 */ virtual void reserved22() {}
    /* 23 */ virtual void reserved23() {}
    /* 24 */ virtual void reserved24() {}
    /* 25 */ virtual void reserved25() {}
    /* 26 */ virtual void reserved26() {}
    /* 27 */ virtual void reserved27() {}
    /* 28 */ virtual void reserved28() {}
    // "loginres".
    /* 29 */ virtual bool decodeLoginReply(const char* message, LoginReplyRecord* record) = 0;
    /* 30 */ virtual void reserved30() {}
    /* 31 */ virtual void reserved31() {}
    /* 32 */ virtual void reserved32() {}
    /* 33 */ virtual void reserved33() {}
    /* 34 */ virtual void reserved34() {}
    /* 35 */ virtual void reserved35() {}
    /* 36 */ virtual void reserved36() {}
    /* 37 */ virtual void reserved37() {}
    // "noble_num_info" with "num".
    /* 38 */ virtual bool decodeNoticeValue(const char* message, NoticeValueRecord* record) = 0;
    // "fansrk" with "bn".
    /* 39 */ virtual bool decodeFansBrand(const char* message, FansBrandRecord* record) = 0;
    /* 40 */ virtual void reserved40() {}
    /* 41 */ virtual void reserved41() {}
    /* 42 */ virtual void reserved42() {}
    /* 43 */ virtual void reserved43() {}
    /* 44 */ virtual void reserved44() {}
    /* 45 */ virtual void reserved45() {}
    /* 46 */ virtual void reserved46() {}
    /* 47 */ virtual void reserved47() {}
    /* 48 */ virtual void reserved48() {}
    /* 49 */ virtual void reserved49() {}
    /* 50 */ virtual void reserved50() {}
    /* 51 */ virtual void reserved51() {}
    /* 52 */ virtual void reserved52() {}
    // Any message: fills the header and returns its MessageTypeCode (kMessageTypeInvalid,
    // with a zeroed header, when the text is not a barrage message).
    /* 53 */ virtual int32_t classify(const char* message, MessageHeader* header) = 0;

protected:
    // Freed through destroy(), never by delete on this type.
    ~MessageDecoder() = default;
};
