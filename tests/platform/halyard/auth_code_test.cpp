#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <string>

#include "halyard/auth_code.h"

namespace {

std::string sign(const char* text, bool live) {
    char* code = live ? GenerateAuthCodeLive(text) : GenerateAuthCode(text);
    std::string result = code != nullptr ? code : "<null>";
    FreeAuthCode(code);
    return result;
}

TEST(AuthCode, MatchesTheDocumentedExamples) {
    // The worked example of docs/signing.md; the simulator verifies with the same secrets.
    const char* text = "my_info?aid=vxtool&time=1700000000%s&token=-1_0__0_0";
    EXPECT_EQ(sign(text, false),
              "e7ace2f6ed7614f08c6c054f78d0ec277fa518cfd72a32994f535d2ad9c9b1b3");
    EXPECT_EQ(sign(text, true), "d788f8b4472e877402cd2703e5f5239f77cc2a7d36ff15293d792ecc234827cf");
}

TEST(AuthCode, EveryMarkIsReplacedByTheSecretOfItsEnvironment) {
    // The secrets as docs/signing.md publishes them to the servers.
    const QByteArray production = "tolvane-prod-5e0c93a1d7f24b68";
    const QByteArray test = "tolvane-live-8b41f6c2e09d3a75";
    const char* const texts[] = {"", "a%sb%sc", "100%", "%S", "%%s"};
    for (const char* text : texts) {
        for (const bool live : {false, true}) {
            QByteArray expanded(text);
            expanded.replace("%s", live ? test : production);
            const QByteArray expected =
                QCryptographicHash::hash(expanded, QCryptographicHash::Sha256).toHex();
            EXPECT_EQ(sign(text, live), expected.toStdString()) << text << " live " << live;
        }
    }
}

TEST(AuthCode, NullInputAndNullRelease) {
    EXPECT_EQ(GenerateAuthCode(nullptr), nullptr);
    EXPECT_EQ(GenerateAuthCodeLive(nullptr), nullptr);
    FreeAuthCode(nullptr);
}

}  // namespace
