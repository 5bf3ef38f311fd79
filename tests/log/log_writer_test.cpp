#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <thread>
#include <vector>

#include "log/log_writer.h"
#include "log/persistent_log_writer.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace {

using namespace tolvane::log;

// The folder named after this test program under the workspace.
QString nameFolder(const IsolatedWorkspace& workspace) {
    return workspace.path() + "/" + QFileInfo(QCoreApplication::applicationFilePath()).fileName();
}

TEST(LogPaths, ExecutableBaseName) {
    struct Case {
        const char* path;
        char separator;
        BaseNameRule rule;
        const char* expected;
    };
    const BaseNameRule windows = BaseNameRule::Windows;
    const BaseNameRule posix = BaseNameRule::Posix;
    const Case cases[] = {
        {"C:\\Program Files\\Studio\\Studio.exe", '\\', windows, "Studio"},
        {"C:\\apps\\my.tool.exe", '\\', windows, "my.tool"},
        {"C:\\apps\\tool", '\\', windows, ""},      // no "."
        {"C:\\apps.d\\tool", '\\', windows, ""},    // "." before the separator
        {"Studio.exe", '\\', windows, ""},          // no separator
        {"C:/apps/Studio.exe", '\\', windows, ""},  // Qt's "/" form is not cut
        {"/opt/studio/Studio.bin", '/', posix, "Studio"},
        {"/usr/bin/tolvane-host", '/', posix, "tolvane-host"},
        {"/opt/apps.d/tool", '/', posix, "tool"},
        {"/opt/apps/.hidden", '/', posix, ".hidden"},
        {"tool", '/', posix, "tool"},
        {"", '/', posix, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(executableBaseName(c.path, QLatin1Char(c.separator), c.rule).toStdString(),
                  c.expected)
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
    // The test program's name has no ".", so it is taken whole.
    EXPECT_EQ(path.toStdString(),
              (nameFolder(workspace) + "/loginLog//" + day + "tolvane.log").toStdString());
    EXPECT_TRUE(QFileInfo(nameFolder(workspace) + "/loginLog").isDir());
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
mode_t modeOf(const QString& path) {
    struct stat info {};
    return ::lstat(path.toLocal8Bit().constData(), &info) == 0 ? info.st_mode & 0777 : 0;
}

TEST(LogWriter, FoldersAndFilesAreOwnerOnly) {
    // A folder left open by an older version is closed as well.
    for (const mode_t before : {0u, 0755u, 0777u}) {
        IsolatedWorkspace workspace;
        if (before != 0) {
            ASSERT_EQ(::mkdir(nameFolder(workspace).toLocal8Bit().constData(), before), 0);
            ::chmod(nameFolder(workspace).toLocal8Bit().constData(), before);
        }
        writeLine(kMainLog, "x");
        EXPECT_EQ(modeOf(nameFolder(workspace)), 0700u) << before;
        EXPECT_EQ(modeOf(nameFolder(workspace) + "/loginLog"), 0700u) << before;
        EXPECT_EQ(modeOf(logFilePath(kMainLog)), 0600u) << before;
    }
}

TEST(LogWriter, PlantedSymbolicLinkIsNotFollowed) {
    const QString day = QDate::currentDate().toString("yyyyMMdd_");
    // Where the link stands, below the workspace, and what it is for: a folder or a file.
    const struct {
        QString linkAt;
        bool toFile;
    } cases[] = {
        {"", false},
        {"/loginLog", false},
        {"/loginLog/" + day + "tolvane.log", true},
        {"/loginLog/" + day + "php.log", true},
    };
    for (const auto& c : cases) {
        IsolatedWorkspace workspace;
        const QString elsewhere = workspace.path() + "/elsewhere";
        QDir(workspace.path()).mkdir("elsewhere");
        const QString target = c.toFile ? elsewhere + "/victim" : elsewhere;
        if (c.toFile) {
            QFile victim(target);
            ASSERT_TRUE(victim.open(QIODevice::WriteOnly));
        }
        const QString link = nameFolder(workspace) + c.linkAt;
        QDir().mkpath(QFileInfo(link).path());
        ASSERT_TRUE(QFile::link(target, link)) << link.toStdString();

        writeLine(kMainLog, "must not land in the link's target");
        PersistentLogWriter writer;
        // Only a link in place of the other log's file leaves php.log itself writable.
        EXPECT_EQ(writer.open(logFilePath(kRequestLog)), c.linkAt.endsWith("tolvane.log"))
            << c.linkAt.toStdString();
        writer.write("nor this");
        writer.close();

        const QStringList landed = QDir(elsewhere).entryList(QDir::Files);
        if (c.toFile) {
            EXPECT_EQ(QFileInfo(target).size(), 0) << c.linkAt.toStdString();
        } else {
            EXPECT_TRUE(landed.isEmpty()) << c.linkAt.toStdString();
        }
    }
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

TEST(PersistentLogWriter, FlushPolicyDecidesWhenLinesReachTheFile) {
    const struct {
        FlushPolicy policy;
        std::vector<int> onDisk;  // lines in the file after writes 1..12, the two opening lines
    } cases[] = {
        {FlushPolicy::EverySixthLine, {2, 2, 2, 2, 2, 8, 8, 8, 8, 8, 8, 14}},
        {FlushPolicy::EveryLine, {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}},
    };
    for (const auto& c : cases) {
        IsolatedWorkspace workspace;
        PersistentLogWriter writer(c.policy);
        ASSERT_TRUE(writer.open(logFilePath(kMessageLog)));
        for (int i = 0; i < 12; ++i) {
            writer.write(QStringLiteral("line %1").arg(i));
            EXPECT_EQ(readLogMessages(kMessageLog).size(), c.onDisk[i]) << "after write " << i + 1;
        }
        writer.write(QStringLiteral("last"));
        writer.close();
        EXPECT_EQ(readLogMessages(kMessageLog).size(), 15);
    }
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
