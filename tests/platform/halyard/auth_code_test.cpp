#include <gtest/gtest.h>

#include <QCryptographicHash>

#include "support/request_signing.h"

namespace {

// The secrets as docs/signing.md publishes them to the servers; the first text is its example.
TEST(AuthCode, EveryMarkIsReplacedByTheSecretOfItsEnvironment) {
    const QByteArray secrets[] = {"tolvane-prod-5e0c93a1d7f24b68", "tolvane-live-8b41f6c2e09d3a75"};
    for (const char* text : {"my_info?aid=vxtool&time=1700000000%s&token=-1_0__0_0", "", "a%sb%sc",
                             "100%", "%S", "%%s"}) {
        for (const bool live : {false, true}) {
            const QByteArray expanded = QByteArray(text).replace("%s", secrets[live]);
            const QByteArray expected =
                QCryptographicHash::hash(expanded, QCryptographicHash::Sha256).toHex();
            EXPECT_EQ(authCode(text, live), expected.toStdString()) << text << " live " << live;
        }
    }
    EXPECT_EQ(GenerateAuthCode(nullptr), nullptr);
    EXPECT_EQ(GenerateAuthCodeLive(nullptr), nullptr);
    FreeAuthCode(nullptr);
}

}  // namespace
