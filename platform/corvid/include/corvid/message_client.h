#pragma once

#include <cstdint>

#include "corvid/message_callbacks.h"

// A connection to one barrage server, run on the client's own I/O thread. Operations keep
// their virtual slots (the number before each); slots nobody calls stay as reserved entries
// so the numbers hold. Every operation may be called from any thread and returns at once:
// the work is handed to the I/O thread in call order, and its outcome arrives through the
// registered callbacks. Made by CreateVxMessageClient, freed by release().
class MessageClient {
public:
    // The server the next login connects to; false for a null host or a port outside 1..65535.
    /* 0 */ virtual bool setServerAddress(const char* host, int32_t port) = 0;
    /* 1 */ virtual void reserved1() {}
    // Connects to the server set last (closing any current connection without callbacks)
    // and logs in with these values and those of slots 5 and 21. False when no server is set.
    /* 2 */ virtual bool login(const char* loginText1, int32_t loginNumber, const char* loginText2,
                               int32_t clientType, int32_t roomId, const char* extraText,
                               int32_t loginMode) = 0;
    /* 3 */ virtual void reserved3() {}
    // Registers the table and user data; a null table, or one whose function fields are all
    // null, unregisters. False for a table whose size field is not 96. When this returns,
    // no callback of the previous registration is running or will run, apart from the one
    // that made this call. Callbacks never run under a lock of the client's, but this call
    // waits for one that is running: a callback must not wait for the thread that makes it.
    /* 4 */ virtual bool registerCallbacks(const MessageCallbacks* callbacks, void* userData) = 0;
    // A text sent with every later login ("ptx").
    /* 5 */ virtual void setParameterText(const char* text) = 0;
    // Stops the I/O thread and frees the client; no callback runs after this returns. Must
    // not be called from inside a callback.
    /* 6 */ virtual void release() = 0;
    /* 7 */ virtual void reserved7() {}
    // Sends a chat message; false when the text is null, too long, or there is no connection.
    /* 8 */ virtual bool sendChatMessage(const char* text) = 0;
    /* 9 */ virtual void reserved9() {}
    /* 10 */ virtual void reserved10() {}
    /* 11 */ virtual void reserved11() {}
    /* 12 */ virtual void reserved12() {}
    // Sends an already encoded barrage text, given as NUL-terminated UTF-16.
    /* 13 */ virtual bool sendRawMessage(const char16_t* message) = 0;
    /* 14 */ virtual void reserved14() {}
    /* 15 */ virtual void reserved15() {}
    /* 16 */ virtual void reserved16() {}
    /* 17 */ virtual void reserved17() {}
    // Sends a gift or prop ("giftsend" with the seven values as "ga1".."ga7").
    /* 18 */ virtual bool sendGift(int32_t kind, int32_t roomId, int32_t mode, int32_t giftValue,
                                   int32_t giftId, int32_t count, const char* extraText) = 0;
    /* 19 */ virtual void reserved19() {}
    // Asks for the room's member information; the answer arrives as "memberinfores".
    // Returns 0, or -1 when there is no connection.
    /* 20 */ virtual int32_t requestMemberInfo(int32_t roomId) = 0;
    // A number and a text sent with every later login ("pnum", "ptx2").
    /* 21 */ virtual void setParameterNumberAndText(int32_t number, const char* text) = 0;
    /* 22 */ virtual void reserved22() {}
    /* 23 */ virtual void reserved23() {}
    /* 24 */ virtual void reserved24() {}
    /* 25 */ virtual void reserved25() {}
    /* 26 */ virtual void reserved26() {}
    // Sends a keep-alive now instead of waiting for the next interval.
    /* 27 */ virtual bool sendKeepAliveNow() = 0;
    // Sends a room text ("roomtext").
    /* 28 */ virtual bool sendRoomText(const char* text) = 0;
    /* 29 */ virtual void reserved29() {}
    // 1 when the current connection has received its login reply, else 0.
    /* 30 */ virtual int32_t loginState() = 0;
    /* 31 */ virtual void reserved31() {}
    // Sends an already encoded subscription text, given as NUL-terminated UTF-16.
    /* 32 */ virtual bool sendSubscription(const char16_t* message) = 0;
    /* 33 */ virtual void reserved33() {}
    /* 34 */ virtual void reserved34() {}
    /* 35 */ virtual void reserved35() {}
    /* 36 */ virtual void reserved36() {}
    /* 37 */ virtual void reserved37() {}
    /* 38 */ virtual void reserved38() {}
    // Closes the current connection without any callback; a later login connects anew.
    /* 39 */ virtual void reset() = 0;

protected:
    // Freed through release(), never by delete on this type.
    ~MessageClient() = default;
};
