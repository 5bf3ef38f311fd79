#pragma once

#include <cstdint>
#include <map>
#include <string>

// Records of the login and session operations. Field order is part of the host contract.

struct ShortTokenInfo {
    std::string uid = "-1";
    std::string shortToken;
    int32_t bizType = 0;
    int32_t longTokenId = 0;
    int32_t clientType = 0;
    std::string createTime;
    int32_t expireIn = 0;
};

// What the host passes to the combined login and to the two verification-code requests.
struct LoginCheckRequest {
    std::string phoneText3;
    std::string phoneText1;
    std::string name;
    std::string secret;
    std::map<std::string, std::string> extraParams;
};

// The anchor's profile as one record (slot 65).
struct UserRecord {
    std::string uid;
    std::string nickname;
    int32_t sex = 0;
    std::string avatarBig;
    std::string avatarMiddle;
    std::string avatarSmall;
    bool isOwnRoom = false;
    bool phoneBound = false;
    std::string mobilePhone;
    std::string ident;
};

// Items of a feedback report that the host supplies beside title, content and images.
struct FeedbackRecord {
    std::string partner;
    std::string type;
    std::string ua;
    std::string uid;
    std::string version;
};
