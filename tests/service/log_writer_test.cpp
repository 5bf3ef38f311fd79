#include <gtest/gtest.h>

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <thread>
#include <vector>

#include "service/log_writer.h"
#include "service/persistent_log_writer.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace {

using namespace tolvane::log;

TEST(LogPaths, ExecutableBaseName) {
    struct Case {
        const char* path;
        char separator;
        const char* expected;
    };
    const Case cases[] = {
        {"C:\\Program Files\\Studio\\Studio.exe", '\\', "Studio"},
        {"C:\\apps\\my.tool.exe", '\\', "my.tool"},
        {"C:\\apps\\tool", '\\', ""},    // no "."
        {"C:\\apps.d\\tool", '\\', ""},  // "." before the separator
        {"Studio.exe", '\\', ""},        // no separator
        {"/opt/studio/Studio.bin", '/', "Studio"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(executableBaseName(c.path, QLatin1Char(c.separator)).toStdString(), c.expected)
            << c.path;
    }
}

TEST(LogPaths, DirectoryKeepsItsSeparators) {
    EXPECT_EQ(logDirectoryFor("/tmp", "Studio").toStdString(), "/tmp/Studio/loginLog/");
    EXPECT_EQ(logDirectoryFor("/tmp/", "Studio").toStdString(), "/tmp/Studio/loginLog/");
    EXPECT_EQ(logDirectoryFor("C:\\Temp\\", "Studio").toStdString(), "C:\\Temp\\Studio/loginLog/");
    // An executable without "." leaves two separators where its name would stand.
    EXPECT_EQ(logDirectoryFor("/tmp", "").toStdString(), "/tmp//loginLog/");
}

TEST(LogPaths, FileNameCarriesTheDayAndTheDoubledSeparator) {
    IsolatedWorkspace workspace;
    const QString path = logFilePath(kMainLog);
    const QString day = QDate::currentDate().toString("yyyyMMdd_");
    // The test program's name has no ".", so its base name is empty.
    EXPECT_EQ(path.toStdString(),
              (workspace.path() + "//loginLog//" + day + "tolvane.log").toStdString());
    EXPECT_TRUE(QFileInfo(workspace.path() + "/loginLog").isDir());
}

TEST(LogWriter, LineFormat) {
    IsolatedWorkspace workspace;
    writeLine(kMainLog, "first");
    writeBanner("VxNetServiceImp::stop");
    QFile file(logFilePath(kMainLog));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    ASSERT_EQ(lines.size(), 3);  // two lines and the final end of line
    const QRegularExpression prefix(R"(^\[\d\d:\d\d:\d\d\.\d\d\d\] )");
    EXPECT_TRUE(prefix.match(lines[0]).hasMatch()) << lines[0].toStdString();
    EXPECT_EQ(lines[0].mid(15).toStdString(), "first");
    EXPECT_EQ(lines[1].mid(15).toStdString(),
              "call function: VxNetServiceImp::stop -----------------");
}

#ifndef _WIN32
TEST(LogWriter, FoldersAndFilesAreOwnerOnly) {
    IsolatedWorkspace workspace;
    writeLine(kMainLog, "x");
    struct stat info {};
    ASSERT_EQ(::stat((workspace.path() + "/loginLog").toLocal8Bit().constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    ASSERT_EQ(::stat(logFilePath(kMainLog).toLocal8Bit().constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST(LogWriter, PlantedSymbolicLinkIsNotFollowed) {
    IsolatedWorkspace workspace;
    QDir(workspace.path()).mkdir("elsewhere");
    ASSERT_TRUE(QFile::link(workspace.path() + "/elsewhere", workspace.path() + "/loginLog"));
    writeLine(kMainLog, "must not land in the link's target");
    EXPECT_TRUE(QDir(workspace.path() + "/elsewhere").entryList(QDir::Files).isEmpty());

    PersistentLogWriter writer;
    EXPECT_FALSE(writer.open(logFilePath(kRequestLog)));
    EXPECT_TRUE(QDir(workspace.path() + "/elsewhere").entryList(QDir::Files).isEmpty());
}
#endif

TEST(PersistentLogWriter, OpenAppendsTwoEmptyLinesAfterOldContent) {
    IsolatedWorkspace workspace;
    writeLine(kRequestLog, "from an earlier session");
    {
        PersistentLogWriter writer;
        ASSERT_TRUE(writer.open(logFilePath(kRequestLog)));
        writer.write("get url: /api/v1/timestamp");
    }
    EXPECT_EQ(readLogMessages(kRequestLog),
              QStringList({"from an earlier session", "", "", "get url: /api/v1/timestamp"}));
}

TEST(PersistentLogWriter, LinesReachTheFileOnEverySixthWriteAndOnClose) {
    IsolatedWorkspace workspace;
    PersistentLogWriter writer;
    ASSERT_TRUE(writer.open(logFilePath(kMessageLog)));
    const int expectedOnDisk[] = {2, 2, 2, 2, 2, 8, 8, 8, 8, 8, 8, 14};  // after writes 1..12
    for (int i = 0; i < 12; ++i) {
        writer.write(QStringLiteral("line %1").arg(i));
        EXPECT_EQ(readLogMessages(kMessageLog).size(), expectedOnDisk[i])
            << "after write " << i + 1;
    }
    writer.write(QStringLiteral("last"));
    writer.close();
    EXPECT_EQ(readLogMessages(kMessageLog).size(), 15);
}

TEST(PersistentLogWriter, ClosedWriterDropsLines) {
    IsolatedWorkspace workspace;
    PersistentLogWriter writer;
    writer.write("nobody opened me");
    EXPECT_FALSE(writer.open(workspace.path() + "/missing-folder/x.log"));
    writer.write("still closed");
    EXPECT_FALSE(QFile::exists(workspace.path() + "/missing-folder/x.log"));
}

TEST(PersistentLogWriter, ConcurrentWritersLoseAndTearNothing) {
    IsolatedWorkspace workspace;
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    {
        PersistentLogWriter writer;
        ASSERT_TRUE(writer.open(logFilePath(kMessageLog)));
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&writer, t] {
                for (int i = 0; i < kLines; ++i) {
                    writer.write(
                        QStringLiteral("thread %1 line %2 %3").arg(t).arg(i).arg(QString(40, 'x')));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    const QStringList messages = readLogMessages(kMessageLog);
    ASSERT_EQ(messages.size(), 2 + kThreads * kLines);
    const QRegularExpression shape(R"(^thread (\d) line (\d+) x{40}$)");
    std::vector<int> next(kThreads, 0);
    for (int i = 2; i < messages.size(); ++i) {
        const auto match = shape.match(messages[i]);
        ASSERT_TRUE(match.hasMatch()) << "torn line: " << messages[i].toStdString();
        const int thread = match.captured(1).toInt();
        EXPECT_EQ(match.captured(2).toInt(), next[thread]++) << "lost or reordered line";
    }
}

}  // namespace
