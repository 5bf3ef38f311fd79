#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

namespace {

constexpr int kProcessTimeoutMs = 60000;

struct ListedOperation {
    QString name;
    QStringList required;  // argument names outside [ ]
};

struct HostRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// The host writes its logs under TMPDIR; the tests keep them out of the shared location.
HostRun runHost(const QStringList& args, const QString& tmp) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), tmp);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TOLVANE_HOST_PATH), args);
    if (!process.waitForFinished(kProcessTimeoutMs)) {
        ADD_FAILURE() << "watchdog: the host did not finish " << args.join(' ').toStdString();
        process.kill();
        process.waitForFinished();
    }
    HostRun run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

QList<ListedOperation> listedOperations(const QString& tmp) {
    const HostRun run = runHost({"call", "--list"}, tmp);
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    QList<ListedOperation> operations;
    for (const QString& line : QString::fromUtf8(run.out).split('\n', Qt::SkipEmptyParts)) {
        QStringList words = line.split(' ', Qt::SkipEmptyParts);
        ListedOperation operation{words.takeFirst(), {}};
        for (const QString& word : words) {
            if (word.startsWith('[')) {
                break;  // optional arguments stay out
            }
            operation.required.append(word);
        }
        operations.append(operation);
    }
    return operations;
}

// Slot number and name of every operation the public header declares.
QMap<int, QString> declaredSlots() {
    QFile header(
        QStringLiteral(TOLVANE_TEST_DATA_DIR "/../../include/tolvane/i_liveencoder_net_service.h"));
    EXPECT_TRUE(header.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(header.readAll());
    const QRegularExpression slot(QStringLiteral(R"(/\* (\d+) \*/ virtual [^(]*?(\w+)\()"));
    QMap<int, QString> found;
    for (auto it = slot.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        found.insert(match.captured(1).toInt(), match.captured(2));
    }
    return found;
}

// Values that let an operation reach the simulator and get a real answer where one exists;
// an argument name not in the table gets "1".
QString sampleValue(const QString& argument) {
    // clang-format off
    static const QMap<QString, QString> samples{
        {"NAME", "anchor"}, {"PASSWORD", "secret123"}, {"SECRET", "secret123"}, {"UID", "10001"},
        {"PHONE", "13800000000"}, {"TARGET", "13800000000"}, {"AREA_CODE", "86"},
        {"TEXT", "hello"}, {"TITLE", "tonight"}, {"CONTENT", "all good"}, {"PROXY", ""},
        {"PUSH_URL", "rtmp://127.0.0.1:1/live/key"}, {"URL", "http://127.0.0.1:1/"},
        {"PATH", "japi/nothing"}, {"DEVICE_ID", "00_00_00_00_FF_01"}, {"VERSION", "v2.0.0.0"},
        {"NUMBER", "20180809"}, {"CITY", "Harbour"}, {"LONGITUDE", "120.1"}, {"LATITUDE", "30.2"}};
    // clang-format on
    return samples.value(argument, QStringLiteral("1"));
}

// A call of every operation of the chain, one host, logged in as the anchor.
QStringList chainArguments(const QList<ListedOperation>& chain) {
    QStringList args{"call", "--sim", "--login", "anchor", "secret123"};
    for (const ListedOperation& operation : chain) {
        if (args.size() > 5) {
            args.append("+");
        }
        args.append(operation.name);
        for (const QString& argument : operation.required) {
            args.append(sampleValue(argument));
        }
    }
    return args;
}

// The operations the host reported, in order, each with a result; none when its login failed.
QStringList answeredOperations(const HostRun& run) {
    const QJsonObject report = QJsonDocument::fromJson(run.out).object();
    if (report.value("login").toObject().value("result").toInt(-1) != 0) {
        return {};
    }
    const QJsonArray calls =
        report.contains("calls") ? report.value("calls").toArray() : QJsonArray{report};
    QStringList answered;
    for (const QJsonValue& call : calls) {
        if (call.toObject().contains("result")) {
            answered.append(call.toObject().value("operation").toString());
        }
    }
    return answered;
}

// Every declared slot is listed once, and every listed operation runs by name against the
// simulator and prints its report, all in one host; release ends the service, so it runs in a
// host of its own.
TEST(HostCallWalk, EverySlotIsListedAndAnswersAsJson) {
    QTemporaryDir tmp;
    QSet<QString> listed;
    QList<ListedOperation> release, others;
    for (const ListedOperation& operation : listedOperations(tmp.path())) {
        EXPECT_FALSE(listed.contains(operation.name))
            << "listed twice: " << operation.name.toStdString();
        listed.insert(operation.name);
        (operation.name == QStringLiteral("release") ? release : others).append(operation);
    }
    const QMap<int, QString> declared = declaredSlots();
    ASSERT_EQ(declared.size(), 98);
    ASSERT_GE(listed.size(), 98);
    for (auto it = declared.begin(); it != declared.end(); ++it) {
        EXPECT_TRUE(listed.contains(it.value()))
            << "slot " << it.key() << " " << it.value().toStdString() << " has no entry";
    }
    for (const QList<ListedOperation>& chain : {others, release}) {
        QStringList names;
        for (const ListedOperation& operation : chain) {
            names.append(operation.name);
        }
        const HostRun run = runHost(chainArguments(chain), tmp.path());
        EXPECT_EQ(answeredOperations(run), names) << run.err.toStdString();
    }
}

// What the command line cannot run is refused with an exit code, before or instead of a call.
TEST(HostCallWalk, RefusesWhatItCannotRun) {
    const std::pair<const char*, int> cases[] = {
        {"noSuchOperation", 2},
        {"release + getRoomId", 2},           // an operation after release
        {"requestGet 1 japi/x z:a=b", 1},     // an unknown request item
        {"requestGet 1 japi/x f:a=b", 1},     // a form item on a GET
        {"getRequest http://x/ ms:soon", 1},  // a time-out that is no number
        {"--login anchor", 2},                // no password
    };
    QTemporaryDir tmp;
    for (const auto& [args, exitCode] : cases) {
        const QStringList command = QStringLiteral("call --sim %1").arg(args).split(' ');
        EXPECT_EQ(runHost(command, tmp.path()).exitCode, exitCode) << args;
    }
}

}  // namespace
