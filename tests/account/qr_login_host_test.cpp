#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <string>
#include <vector>

#include "platform/sim_qr_control.h"
#include "support/scoped_env.h"

namespace {

// Reads the host's output until a line matches, or the host ends or the time runs out.
QString readUntil(QProcess& host, QString& seen, const QRegularExpression& pattern) {
    for (int i = 0; i < 100; ++i) {
        const QRegularExpressionMatch match = pattern.match(seen);
        if (match.hasMatch()) {
            return match.captured(1);
        }
        if (!host.waitForReadyRead(200) && host.state() == QProcess::NotRunning) {
            break;
        }
        seen += QString::fromUtf8(host.readAllStandardOutput());
    }
    return QString();
}

// What a person does: runs qr-login, scans the drawn code, and runs the printed command.
TEST(QrLoginHost, PrintedCommandLogsInAndTheImageDecodesToTheCode) {
    IsolatedWorkspace workspace;
    QProcess host;
    host.start(QStringLiteral(TOLVANE_HOST_PATH),
               {QStringLiteral("qr-login"), QStringLiteral("--sim")});
    ASSERT_TRUE(host.waitForStarted(5000));
    QString seen;
    const QString url = readUntil(host, seen, QRegularExpression("app: (\\S+)\\n"));
    // The image lies beside the module's logs, inside the temporary location.
    const QString png = readUntil(host, seen, QRegularExpression("image: (\\S+)\\n"));
    EXPECT_TRUE(png.startsWith(workspace.path() + QLatin1Char('/'))) << png.toStdString();
    EXPECT_FALSE(
        QDir(QFileInfo(png).path()).entryList({QStringLiteral("*_tolvane.log")}).isEmpty());
    const QString command =
        readUntil(host, seen, QRegularExpression("\\n  (\\S+ qr confirm .+)\\n"));
    ASSERT_FALSE(command.isEmpty()) << seen.toStdString();
    // A person scans once the code is on screen and the host has begun to ask.
    ASSERT_FALSE(readUntil(host, seen, QRegularExpression("(waiting for a scan)")).isEmpty());
    EXPECT_TRUE(command.startsWith(QStringLiteral(TOLVANE_HOST_PATH).section('/', 0, -2)));

    std::vector<std::string> args;
    for (const QString& word : command.split(' ').mid(2)) {
        args.push_back(word.toStdString());
    }
    EXPECT_EQ(tolvane::sim::runQrCommand(args), 0);
    ASSERT_TRUE(host.waitForFinished(20000));
    seen += QString::fromUtf8(host.readAllStandardOutput());
    EXPECT_EQ(host.exitCode(), 0) << seen.toStdString();
    EXPECT_TRUE(seen.contains(QStringLiteral("logged in as Lantern (uid 10001)")))
        << seen.toStdString();

    QProcess decoder;
    decoder.start(QStringLiteral("zbarimg"), {QStringLiteral("--raw"), QStringLiteral("-q"), png});
    ASSERT_TRUE(decoder.waitForFinished(20000)) << "zbarimg (zbar-tools) is needed";
    EXPECT_EQ(QString::fromUtf8(decoder.readAllStandardOutput()).trimmed(), url);
}

}  // namespace
