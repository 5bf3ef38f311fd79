#include <gtest/gtest.h>

#include <QDir>

#include "log/log_writer.h"
#include "service/environment.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

// A host that ends up on production because of its default.data reads why in tolvane.log: one
// line with the path looked at and the environment taken; a file that was read says nothing.
TEST(UnreadDefaultData, NamesThePathAndTheEnvironment) {
    enum class Shape { None, Folder, Text };
    const struct {
        const char* what;
        Shape shape;
        const char* content;
        const char* line;  // %1 is the path; "": no line
    } cases[] = {
        {"no file", Shape::None, "", "default.data: no file at %1, environment 0"},
        {"a folder in its place", Shape::Folder, "",
         "default.data: cannot read %1 (%2), environment 0"},
        {"not JSON", Shape::Text, "app.domain=2",
         "default.data: %1 is not a JSON object, environment 0"},
        {"read", Shape::Text, R"({"app.domain": 2})", ""},
        {"read, without an environment", Shape::Text, "{}", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        IsolatedWorkspace workspace;
        const QString path = workspace.path() + "/default.data";
        QFile::remove(path);
        if (c.shape == Shape::Folder) {
            ASSERT_TRUE(QDir().mkdir(path));
        } else if (c.shape == Shape::Text) {
            workspace.writeDefaultData(c.content);
        }
        tolvane::readEnvironment();
        QString expected = QString::fromLatin1(c.line).replace("%1", path);
        const QStringList lines = readLogMessages(tolvane::log::kMainLog).filter("default.data");
        if (c.shape == Shape::Folder) {
            // The reason is the system's own text.
            ASSERT_EQ(lines.size(), 1) << lines.join('\n').toStdString();
            const QStringList around = expected.split("%2");
            EXPECT_TRUE(lines[0].startsWith(around[0]) && lines[0].endsWith(around[1]))
                << lines[0].toStdString();
        } else {
            EXPECT_EQ(lines, expected.isEmpty() ? QStringList() : QStringList{expected});
        }
    }
}

}  // namespace
