#include <gtest/gtest.h>
#include <httplib.h>

#include <QCryptographicHash>
#include <QFile>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <algorithm>
#include <mutex>
#include <thread>
#include <tuple>

#include "http/sim_http_server.h"
#include "net/easy_net_manager.h"
#include "net/form_part.h"
#include "support/log_reader.h"
#include "support/peak_memory.h"
#include "support/replies.h"
#include "support/scoped_env.h"
#include "support/wait.h"

namespace {

using tolvane::log::kMainLog;
using tolvane::net::contentDisposition;
using tolvane::net::FormPart;
using tolvane::sim::SimFault;
using tolvane::sim::SimHttpServer;

// One part of a multipart/form-data body as it arrived; the content only as its hash.
struct ReceivedPart {
    std::string name;
    std::string filename;
    std::string contentType;
    QByteArray sha256;

    bool operator==(const ReceivedPart& other) const {
        return std::tie(name, filename, contentType, sha256) ==
               std::tie(other.name, other.filename, other.contentType, other.sha256);
    }
};

inline void PrintTo(const ReceivedPart& part, std::ostream* os) {
    *os << '{' << part.name << ", " << part.filename << ", " << part.contentType << ", "
        << part.sha256.toHex().left(12).toStdString() << '}';
}

// Hashes each part of a form POSTed to /upload as it streams in, so no upload is held in memory.
class FormRecorder {
public:
    FormRecorder() {
        server_.Post("/upload", [this](const httplib::Request& request, httplib::Response& response,
                                       const httplib::ContentReader& read) {
            std::vector<ReceivedPart> parts;
            QCryptographicHash hash(QCryptographicHash::Sha256);
            const auto finishPart = [&] {
                if (!parts.empty()) {
                    parts.back().sha256 = hash.result();
                    hash.reset();
                }
            };
            read(
                [&](const httplib::MultipartFormData& header) {
                    finishPart();
                    parts.push_back({header.name, header.filename, header.content_type, {}});
                    return true;
                },
                [&](const char* data, size_t length) {
                    hash.addData(data, static_cast<int>(length));
                    return true;
                });
            finishPart();
            const std::lock_guard<std::mutex> lock(mutex_);
            contentTypes_.push_back(request.get_header_value("Content-Type"));
            forms_.push_back(std::move(parts));
            response.set_content("{\"error\":0}", "application/json");
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        EXPECT_TRUE(waitUntil([this] { return server_.is_running(); }))
            << "the recorder's listener";
    }
    ~FormRecorder() {
        server_.stop();
        thread_.join();
    }

    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/upload").arg(port_)); }
    std::vector<std::vector<ReceivedPart>> forms() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return forms_;
    }
    std::vector<std::string> contentTypes() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return contentTypes_;
    }

private:
    httplib::Server server_;
    std::thread thread_;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::vector<ReceivedPart>> forms_;
    std::vector<std::string> contentTypes_;
};

class EasyNetManagerUploadTest : public ::testing::Test {
protected:
    // A file of random bytes, written a megabyte at a time so the test never holds it whole.
    QString writeFile(const QString& name, qint64 size) const {
        QFile file(workspace_.path() + '/' + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        QByteArray chunk(1 << 20, Qt::Uninitialized);
        for (qint64 left = size; left > 0; left -= chunk.size()) {
            QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(chunk.data()),
                                                  chunk.size() / 4);
            file.write(chunk.constData(), std::min<qint64>(left, chunk.size()));
        }
        return file.fileName();
    }
    static QByteArray fileHash(const QString& path) {
        QFile file(path);
        QCryptographicHash hash(QCryptographicHash::Sha256);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly) && hash.addData(&file));
        return hash.result();
    }
    int logSize() const { return readLogMessages(kMainLog).size(); }
    QStringList logSince(int from) const { return readLogMessages(kMainLog).mid(from); }

    IsolatedWorkspace workspace_;
    EasyNetManager client_;
};

// Quotes, CR and LF in part and file names are escaped, so a name can never forge a header.
TEST_F(EasyNetManagerUploadTest, PartsArriveIntactInOrderWithTheirNamesAndTypes) {
    struct Case {
        FormPart part;
        std::string name;
        std::string filename;
        std::string contentType;
    };
    const auto file = [this](const char* name, const QString& fileName, qint64 size = 3) {
        return FormPart::file(name, writeFile(fileName, size));
    };
    const Case cases[] = {
        {FormPart::text("token", "abc"), "token", "", ""},
        {FormPart::text("content", "卡顿 & a=b; \"quoted\"\r\nnext line"), "content", "", ""},
        {file("feed_img", "shot.PNG", 3 << 20), "feed_img", "shot.PNG", "image/png"},
        {file("feed_img", "photo.jpeg", 2 << 20), "feed_img", "photo.jpeg", "image/jpeg"},
        {file("feed_img", "thumb.jpg", 1000), "feed_img", "thumb.jpg", "image/jpeg"},
        {file("log", "notes.txt"), "log", "notes.txt", "application/octet-stream"},
        {FormPart::text("empty", ""), "empty", "", ""},
        {FormPart::text("a\"b", "t"), "a%22b", "", ""},
        {FormPart::text("a\r\nX-Evil: 1", "t"), "a%0D%0AX-Evil: 1", "", ""},
        {file("img", "say \"hi\".png"), "img", "say %22hi%22.png", "image/png"},
        {file("img", "two\nlines.png"), "img", "two%0Alines.png", "image/png"},
    };
    // The header's own text, quotes and all, as the platform's upload service parses it.
    EXPECT_EQ(contentDisposition(cases[2].part).toStdString(),
              R"(form-data; name="feed_img"; filename="shot.PNG")");
    std::vector<FormPart> parts;
    std::vector<ReceivedPart> expected;
    for (const Case& c : cases) {
        parts.push_back(c.part);
        const bool isFile = c.part.kind == FormPart::Kind::File;
        expected.push_back(
            {c.name, c.filename, c.contentType,
             isFile ? fileHash(c.part.value)
                    : QCryptographicHash::hash(c.part.value.toUtf8(), QCryptographicHash::Sha256)});
    }

    FormRecorder server;
    QByteArray reply;
    ASSERT_TRUE(client_.postMultipart(QNetworkRequest(server.url()), parts, reply, 20000))
        << reply.toStdString();
    EXPECT_EQ(reply, "{\"error\":0}");
    ASSERT_EQ(server.forms().size(), 1u);
    EXPECT_EQ(server.forms().front(), expected);
    EXPECT_EQ(server.contentTypes().front().rfind("multipart/form-data; boundary=", 0), 0u);
}

TEST_F(EasyNetManagerUploadTest, AFileThatCannotBeOpenedSendsNothing) {
    const QString good = writeFile("ok.png", 100);
    const QString missing = workspace_.path() + "/missing.png";
    struct Case {
        const char* what;
        std::vector<FormPart> parts;
        QString unopened;
    };
    const Case cases[] = {
        {"missing file", {FormPart::text("token", "abc"), FormPart::file("img", missing)}, missing},
        {"a directory", {FormPart::file("img", workspace_.path())}, workspace_.path()},
        {"after a good one",
         {FormPart::file("img", good), FormPart::file("img", missing)},
         missing},
    };
    FormRecorder server;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const int logged = logSize();
        QByteArray reply = "untouched";
        QString unopened;
        EXPECT_FALSE(
            client_.postMultipart(QNetworkRequest(server.url()), c.parts, reply, 2000, &unopened));
        EXPECT_EQ(unopened, c.unopened);
        EXPECT_EQ(reply, "untouched");
        EXPECT_EQ(logSince(logged), QStringList{"post image open failed: " + c.unopened});
    }
    EXPECT_TRUE(server.forms().empty());
}

// Hung up on without a reply, Qt would resend the request: for a POST, a second upload.
TEST_F(EasyNetManagerUploadTest, APostIsNeverSentTwice) {
    const QString image = writeFile("shot.png", 200000);
    struct Case {
        const char* what;
        QByteArray formBody;
        std::vector<FormPart> multipart;  // empty: a form POST of formBody
    };
    const Case cases[] = {
        {"form post", "a=1&b=2", {}},
        {"empty form post", "", {}},
        {"multipart with a file", "", {FormPart::text("a", "1"), FormPart::file("img", image)}},
        {"multipart of text", "", {FormPart::text("a", "1")}},
    };
    const std::string path = "/sim/echo/none";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // Read whole, then hung up on once: a silent resend would find the fault gone and succeed.
        SimHttpServer server;
        ASSERT_TRUE(server.start());
        const QUrl url(QString::fromStdString(server.httpOrigin() + path));
        QByteArray reply;
        ASSERT_TRUE(client_.get(QNetworkRequest(url), reply, 3000));
        server.setFault(path, SimFault::closeBeforeReply().oneShot());
        const int logged = logSize();
        const QNetworkRequest second(url);
        EXPECT_FALSE(c.multipart.empty() ? client_.post(second, c.formBody, reply, 3000)
                                         : client_.postMultipart(second, c.multipart, reply, 3000));
        EXPECT_EQ(server.requestLog().to(path).size(), 2u);  // the GET, then the POST once
        EXPECT_EQ(replyError(reply), QNetworkReply::ContentReSendError) << reply.toStdString();
        EXPECT_TRUE(logSince(logged).contains("QNetworkAccessManager NetworkError error:205"));
    }
}

TEST_F(EasyNetManagerUploadTest, AFileIsStreamedFromDiskNotLoadedIntoMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers hold freed memory back, so the peak says nothing about copies";
#endif
    constexpr qint64 kFileSize = 20 << 20;
    const QString big = writeFile("big.jpg", kFileSize);
    FormRecorder server;
    const PeakMemory memory;
    if (!memory.available()) {
        GTEST_SKIP() << "no peak memory figures from /proc";
    }
    QByteArray reply;
    ASSERT_TRUE(client_.postMultipart(QNetworkRequest(server.url()),
                                      {FormPart::file("feed_img", big)}, reply, 30000));
    // Streamed, the peak rises by a few MB of buffers and threads; one copy of the file alone
    // would add its whole size.
    EXPECT_LT(memory.growthKb() * 1024, kFileSize / 2);
    ASSERT_EQ(server.forms().size(), 1u);
    EXPECT_EQ(server.forms().front().front().sha256, fileHash(big));
}

}  // namespace
