#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <functional>

#include "net/easy_net_manager.h"
#include "net/upload_test_servers.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

using tolvane::log::kMainLog;

int envelopeError(const QByteArray& reply) {
    return QJsonDocument::fromJson(reply).object().value("error").toInt();
}

class EasyNetManagerUploadTest : public ::testing::Test {
protected:
    int logSize() const { return readLogMessages(kMainLog).size(); }
    QStringList logSince(int from) const { return readLogMessages(kMainLog).mid(from); }

    IsolatedWorkspace workspace_;
    EasyNetManager client_;
};

// The server reads the request and closes the connection without answering: Qt would send the
// request again on a new connection, which for a POST would be a second upload.
TEST_F(EasyNetManagerUploadTest, APostIsNeverSentTwice) {
    using Call = std::function<bool(EasyNetManager&, const QUrl&, QByteArray&)>;
    struct Case {
        const char* what;
        Call call;
    };
    const Case cases[] = {
        {"form post",
         [](EasyNetManager& client, const QUrl& url, QByteArray& reply) {
             return client.post(QNetworkRequest(url), "a=1&b=2", reply, 3000);
         }},
        {"empty post",
         [](EasyNetManager& client, const QUrl& url, QByteArray& reply) {
             return client.post(QNetworkRequest(url), QByteArray(), reply, 3000);
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        DropsSecondRequest server;
        QByteArray reply;
        ASSERT_TRUE(client_.get(QNetworkRequest(server.url("/first")), reply, 3000));
        const int logged = logSize();
        EXPECT_FALSE(c.call(client_, server.url("/second"), reply));
        EXPECT_EQ(server.requests(), 2);
        EXPECT_EQ(envelopeError(reply), QNetworkReply::ContentReSendError) << reply.toStdString();
        EXPECT_TRUE(logSince(logged).contains("QNetworkAccessManager NetworkError error:205"));
    }
}

}  // namespace
