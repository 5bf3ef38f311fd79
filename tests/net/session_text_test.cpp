#include <gtest/gtest.h>

#include "net/session_text.h"

namespace {

using namespace tolvane::net;

TEST(SessionText, Token) {
    struct Case {
        ShortTokenInfo info;
        std::string expected;
    };
    ShortTokenInfo loggedIn;
    loggedIn.uid = "12345";
    loggedIn.shortToken = "a1b2c3";
    loggedIn.bizType = 1;
    loggedIn.longTokenId = 77;
    loggedIn.clientType = 2;
    loggedIn.createTime = "ignored";
    loggedIn.expireIn = 99;
    ShortTokenInfo blank;
    blank.uid.clear();
    ShortTokenInfo huge = loggedIn;
    huge.shortToken = std::string(3000, 'x');
    const Case cases[] = {
        {ShortTokenInfo{}, "-1_0__0_0"},
        {blank, "_0__0_0"},
        {loggedIn, "12345_1_a1b2c3_2_77"},  // client type before long token id
        {huge, ("12345_1_" + std::string(3000, 'x')).substr(0, 1023)},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(sessionToken(c.info), c.expected);
    }
}

TEST(SessionText, UserDevice) {
    struct Case {
        std::string deviceId;
        std::string version;
        QByteArray decoded;
    };
    const Case cases[] = {
        {"00_00_00_00_FF_FF", "v1.0.0.0", "00_00_00_00_FF_FF|v1.0.0.0"},
        {"", "", "|"},
        {"设备", "v2", "设备|v2"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(userDeviceValue(c.deviceId, c.version), c.decoded.toBase64()) << c.deviceId;
    }
    EXPECT_EQ(userDeviceValue("00_00_00_00_FF_FF", "v1.0.0.0"),
              "MDBfMDBfMDBfMDBfRkZfRkZ8djEuMC4wLjA=");
}

}  // namespace
