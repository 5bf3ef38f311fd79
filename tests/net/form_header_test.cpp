#include <gtest/gtest.h>

#include <QFile>

#include "net/easy_net_manager.h"
#include "net/form_part.h"
#include "net/upload_test_servers.h"
#include "support/scoped_env.h"

namespace {

using tolvane::net::contentDisposition;
using tolvane::net::FormPart;

// A quote, CR or LF in a part name or a file name (a screenshot may be called anything) is
// written so that the part header keeps its shape: the server sees one part with the escaped
// names, never a name cut short or a header of the caller's making.
TEST(FormPartHeader, NamesCannotBreakThePartHeader) {
    IsolatedWorkspace workspace;
    const auto file = [&workspace](const QString& name) {
        QFile out(workspace.path() + '/' + name);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write("png") == 3);
        return out.fileName();
    };
    struct Case {
        FormPart part;
        const char* header;
        const char* name;
        const char* filename;
    };
    const Case cases[] = {
        {FormPart::text("title", "t"), R"(form-data; name="title")", "title", ""},
        {FormPart::file("feed_img", file("shot.png")),
         R"(form-data; name="feed_img"; filename="shot.png")", "feed_img", "shot.png"},
        {FormPart::text("a\"b", "t"), R"(form-data; name="a%22b")", "a%22b", ""},
        {FormPart::text("a\r\nX-Evil: 1", "t"), R"(form-data; name="a%0D%0AX-Evil: 1")",
         "a%0D%0AX-Evil: 1", ""},
        {FormPart::file("feed_img", file("say \"hi\".png")),
         R"(form-data; name="feed_img"; filename="say %22hi%22.png")", "feed_img",
         "say %22hi%22.png"},
        {FormPart::file("feed_img", file("two\nlines.png")),
         R"(form-data; name="feed_img"; filename="two%0Alines.png")", "feed_img",
         "two%0Alines.png"},
    };
    FormRecorder server;
    EasyNetManager client;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.header);
        EXPECT_EQ(contentDisposition(c.part).toStdString(), c.header);
        QByteArray reply;
        ASSERT_TRUE(client.postMultipart(QNetworkRequest(server.url()), {c.part}, reply, 5000))
            << reply.toStdString();
        const auto received = server.forms().back();
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].name, c.name);
        EXPECT_EQ(received[0].filename, c.filename);
    }
}

}  // namespace
