#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>

#include "log/log_writer.h"
#include "service/environment.h"
#include "service/os_name.h"
#include "service/vx_net_service_imp.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

// The service reads the environment when made and on reload; a redirected install says where
// its endpoints point, once.
TEST(Environment, ServiceReadsAtConstructionAndOnReloadAndSaysWhereItIsRedirected) {
    const struct {
        const char* members;  // beside "app.domain"
        const char* line;     // "": no such line
    } cases[] = {
        {"", ""},
        {R"(, "endpoints": {"origin": "http://127.0.0.1:40123"})",
         "default.data endpoints: origin http://127.0.0.1:40123"},
        {R"(, "endpoints": {"base": {"3": "http://127.0.0.1:9/b/"}, "host": {"2": "http://h:7"}})",
         "default.data endpoints: base 3 http://127.0.0.1:9/b/, host 2 http://h:7"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.members);
        IsolatedWorkspace workspace;
        workspace.writeDefaultData(QByteArray(R"({"app.domain": 2)") + c.members + "}");
        {
            VxNetServiceImp service(nullptr, nullptr);
            EXPECT_EQ(service.environment(), 2);
            workspace.writeDefaultData(QByteArray(R"({"app.domain": 3)") + c.members + "}");
            EXPECT_EQ(service.environment(), 2);
            service.reloadEnvironment();
            EXPECT_EQ(service.environment(), 3);
            service.stop();
        }
        const QStringList said = readLogMessages(tolvane::log::kMainLog)
                                     .filter(QRegularExpression("^default.data endpoints"));
        EXPECT_EQ(said, *c.line ? QStringList{c.line} : QStringList());
    }
}

// A host put on production by its default.data reads why in tolvane.log; a read file says nothing.
TEST(Environment, ReadFromDefaultDataOrSaidWhyNot) {
    enum class Shape { None, Folder, Text };
    const struct {
        Shape shape;
        const char* content;
        int environment;
        const char* line;  // %1 is the path, %2 the system's reason; "": no line
    } cases[] = {
        {Shape::None, "", 0, "default.data: no file at %1, environment 0"},
        {Shape::Folder, "", 0, "default.data: cannot read %1 (%2), environment 0"},
        {Shape::Text, "app.domain=2", 0, "default.data: %1 is not a JSON object, environment 0"},
        {Shape::Text, R"({"app.domain": 3)", 0,
         "default.data: %1 is not a JSON object, environment 0"},
        {Shape::Text, R"({"app.domain": 2})", 2, ""},
        {Shape::Text, R"({"app.domain": 7})", 7, ""},
        {Shape::Text, R"({"app.domain": "2"})", 0, ""},
        {Shape::Text, R"({"app.domain": 1.9})", 0, ""},  // not a whole number
        {Shape::Text, "{}", 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        IsolatedWorkspace workspace;
        const QString path = workspace.path() + "/default.data";
        QFile::remove(path);
        if (c.shape == Shape::Folder) {
            ASSERT_TRUE(QDir().mkdir(path));
        } else if (c.shape == Shape::Text) {
            workspace.writeDefaultData(c.content);
        }
        EXPECT_EQ(tolvane::readEnvironment(), c.environment);
        const QStringList expected = QString::fromLatin1(c.line).replace("%1", path).split("%2");
        const QStringList lines = readLogMessages(tolvane::log::kMainLog).filter("default.data");
        if (*c.line == '\0') {
            EXPECT_EQ(lines, QStringList());
        } else {
            ASSERT_EQ(lines.size(), 1) << lines.join('\n').toStdString();
            EXPECT_TRUE(lines[0].startsWith(expected.first()) && lines[0].endsWith(expected.last()))
                << lines[0].toStdString();
        }
    }
}

TEST(OsName, WindowsVersionTable) {
    const struct {
        int major, minor;
        const char* name;
    } cases[] = {{5, 1, "Windows XP"}, {6, 1, "Windows 7"},   {6, 3, "Windows 8.1"},
                 {6, 4, "Unknown"},    {10, 7, "Windows 10"}, {11, 0, "Unknown"}};
    for (const auto& c : cases) {
        EXPECT_EQ(tolvane::windowsNameForVersion(c.major, c.minor).toStdString(), c.name)
            << c.major << "." << c.minor;
    }
}

}  // namespace
