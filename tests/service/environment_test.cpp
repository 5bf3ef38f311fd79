#include <gtest/gtest.h>

#include <QRegularExpression>

#include "service/environment.h"
#include "log/log_writer.h"
#include "service/os_name.h"
#include "service/vx_net_service_imp.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

struct EnvironmentCase {
    const char* content;  // nullptr: no file at all
    int expected;
};

TEST(Environment, ReadFromDefaultData) {
    const EnvironmentCase cases[] = {
        {nullptr, 0},
        {R"({"app.domain": 2})", 2},
        {R"({"app.domain": "2"})", 0},
        {R"({"app.domain": 7})", 7},
        {R"({"app.domain": 1.9})", 0},  // not a whole number
        {R"({"app.domain": 3)", 0},
        {R"({"other": 3})", 0},
    };
    for (const EnvironmentCase& c : cases) {
        IsolatedWorkspace workspace;
        QFile::remove(workspace.path() + "/default.data");
        if (c.content != nullptr) {
            workspace.writeDefaultData(c.content);
        }
        EXPECT_EQ(tolvane::readEnvironment(), c.expected) << (c.content ? c.content : "(no file)");
    }
}

TEST(Environment, ServiceReadsAtConstructionAndOnReload) {
    IsolatedWorkspace workspace;
    workspace.writeDefaultData(
        R"({"app.domain": 2, "endpoints": {"origin": "http://127.0.0.1:1"}})");
    VxNetServiceImp service(nullptr, nullptr);
    EXPECT_EQ(service.environment(), 2);
    workspace.writeDefaultData(R"({"app.domain": 3})");
    EXPECT_EQ(service.environment(), 2);
    service.reloadEnvironment();
    EXPECT_EQ(service.environment(), 3);
}

TEST(Environment, RedirectedInstallSaysSoOnceAtStartUp) {
    const struct {
        const char* content;
        const char* line;  // "": no such line
    } cases[] = {
        {R"({"app.domain": 1})", ""},
        {R"({"endpoints": {"origin": "http://127.0.0.1:40123"}})",
         "default.data endpoints: origin http://127.0.0.1:40123"},
        {R"({"endpoints": {"base": {"3": "http://127.0.0.1:9/b/"}, "host": {"2": "http://h:7"}}})",
         "default.data endpoints: base 3 http://127.0.0.1:9/b/, host 2 http://h:7"},
    };
    for (const auto& c : cases) {
        IsolatedWorkspace workspace;
        workspace.writeDefaultData(c.content);
        {
            VxNetServiceImp service(nullptr, nullptr);
            service.reloadEnvironment();
            service.stop();
        }
        const QStringList said = readLogMessages(tolvane::log::kMainLog)
                                     .filter(QRegularExpression("^default.data endpoints"));
        EXPECT_EQ(said, *c.line ? QStringList{c.line} : QStringList()) << c.content;
    }
}

TEST(OsName, WindowsVersionTable) {
    struct Case {
        int major, minor;
        const char* name;
    };
    const Case cases[] = {{5, 1, "Windows XP"}, {6, 1, "Windows 7"},   {6, 3, "Windows 8.1"},
                          {6, 4, "Unknown"},    {10, 7, "Windows 10"}, {11, 0, "Unknown"}};
    for (const Case& c : cases) {
        EXPECT_EQ(tolvane::windowsNameForVersion(c.major, c.minor).toStdString(), c.name)
            << c.major << "." << c.minor;
    }
}

}  // namespace
