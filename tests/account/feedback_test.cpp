#include <gtest/gtest.h>

#include <QFile>

#include "support/log_reader.h"
#include "support/sim_service_fixture.h"

namespace {

class Feedback : public LoggedInSimServiceTest {
protected:
    // A file of the given size in the workspace; returns its path.
    std::string writeImage(const QString& name, int size) {
        const QString path = workspace_.path() + "/" + name;
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(size, 'i'));
        return path.toStdString();
    }
};

TEST_F(Feedback, TextAndImagesArriveIntact) {
    const std::vector<std::string> paths = {writeImage("screen.png", 3 << 20),
                                            writeImage("camera.JPG", 1 << 20)};
    const FeedbackRecord record{"partner-7", "2", "studio/2.4", "10001", "v2.4.0.1"};
    std::string reply;
    ASSERT_EQ(
        service().reportFeedback("No sound", "Audio drops after 5 minutes", record, paths, reply),
        0);
    EXPECT_EQ(reply, R"({"data":{"images":2},"error":0})");  // the platform's text, unread

    const auto received = sim().feedback().last();
    ASSERT_TRUE(received.has_value());
    EXPECT_EQ(received->uid, "10001");
    // The platform's parser keeps parts by name; their order is the upload client's to test.
    std::string items;
    for (const auto& [name, value] :
         std::map<std::string, std::string>(received->items.begin(), received->items.end())) {
        items += name == "token" ? "" : name + "=" + value + ";";
    }
    EXPECT_EQ(items,
              "content=Audio drops after 5 minutes;partner=partner-7;title=No sound;type=2;"
              "ua=studio/2.4;uid=10001;version=v2.4.0.1;");
    // The bytes of every part are the upload client's to test; here, which files went out.
    ASSERT_EQ(received->images.size(), 2u);
    for (const auto& image : received->images) {
        EXPECT_EQ(image.content.size(), image.fileName == "screen.png" ? 3u << 20 : 1u << 20);
        EXPECT_EQ(image.contentType, image.fileName == "screen.png" ? "image/png" : "image/jpeg");
    }
    const auto requests = requestsTo("/api/v1/report_message");
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_TRUE(requests[0].authOk) << requests[0].signingText;
    EXPECT_TRUE(mainLogHas("reportFeedback-----------------"));
}

TEST_F(Feedback, NothingGoesOutWhenAnImageCannotBeRead) {
    const std::vector<std::string> paths = {writeImage("ok.png", 1024),
                                            workspace_.path().toStdString() + "/missing.png"};
    std::string reply = "untouched";
    EXPECT_EQ(service().reportFeedback("t", "c", FeedbackRecord(), paths, reply), 210);
    EXPECT_EQ(reply, "untouched");
    EXPECT_TRUE(requestsTo("/api/v1/report_message").empty());

    // A refused upload hands the platform's text over unread.
    service().logout();
    EXPECT_EQ(service().reportFeedback("t", "c", FeedbackRecord(), {}, reply), 0);
    EXPECT_NE(reply.find("606"), std::string::npos) << reply;
}

}  // namespace
