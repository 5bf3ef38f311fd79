#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <memory>

#include "demo.h"
#include "module_loader.h"
#include "operation_calls.h"
#include "platform/sim_platform.h"
#include "printing_observer.h"
#include "qr_login.h"
#include "slow_line_options.h"

namespace {

// The one operation after which the service no longer exists.
const QString kRelease = QStringLiteral("release");

int usage(QTextStream& err) {
    err << "usage: tolvane-host demo [SLOW]\n"
           "       tolvane-host qr-login [--sim [SLOW]] [--png PATH]\n"
           "       tolvane-host call --list\n"
           "       tolvane-host call [--sim [SLOW]] [--login NAME PASSWORD] OPERATION "
           "[ARGUMENT...] "
           "[+ OPERATION [ARGUMENT...]]...\n"
           "Operations joined by + run in order on one service, so later ones see the state\n"
           "earlier ones left (the room, the category, the push lines).\n"
           "--sim runs them against an embedded platform simulator instead of the environment\n"
           "that default.data (or TOLVANE_DEFAULT_DATA) selects; SLOW is --latency MS and/or\n"
           "--bandwidth KBPS, a slow line between the module and that simulator.\n"
           "A request ITEM is h:KEY=VALUE (header), q:KEY=VALUE (query), f:KEY=VALUE (form, POST)\n"
           "or ms:N (time-out). release ends the service, so it can only come last.\n"
           "operations:\n";
    for (const OperationCall& call : operationCalls()) {
        err << "  " << call.name << ' ' << call.usage << '\n';
    }
    err.flush();
    return 2;
}

// One line per operation, its name and then its arguments, for people and for scripts.
int listOperations(QTextStream& out) {
    for (const OperationCall& call : operationCalls()) {
        out << (call.usage.isEmpty() ? call.name : call.name + ' ' + call.usage) << '\n';
    }
    out.flush();
    return 0;
}

// "OP ARG... + OP ARG..." as one list per operation, its name first.
QList<QStringList> splitOperations(const QStringList& args) {
    QList<QStringList> operations{QStringList()};
    for (const QString& arg : args) {
        if (arg == QStringLiteral("+")) {
            operations.append(QStringList());
        } else {
            operations.last().append(arg);
        }
    }
    return operations;
}

QJsonObject runOperation(const OperationCall& call, ILiveencoderNetService& service,
                         const QStringList& args) {
    QJsonObject report{{"operation", call.name}};
    const QJsonObject result = call.run(service, args);
    for (auto it = result.begin(); it != result.end(); ++it) {
        report.insert(it.key(), it.value());
    }
    return report;
}

// Operations against whatever environment default.data selects, or the embedded simulator,
// printed as JSON: one operation's report alone, several as the list "calls".
int runCall(CreateNetServiceFunction create, PrintingObserver& observer, QStringList args,
            QTextStream& out, QTextStream& err) {
    // The simulator points TOLVANE_DEFAULT_DATA at itself, so it must start before the service
    // reads its configuration, and outlive it.
    QTemporaryDir simFolder;
    std::unique_ptr<tolvane::sim::SimPlatform> sim;
    if (!args.isEmpty() && args.first() == QStringLiteral("--sim")) {
        args.removeFirst();
        tolvane::sim::SimEnvironment::Options options;
        if (!takeSlowLine(args, options)) {
            return usage(err);
        }
        sim = std::make_unique<tolvane::sim::SimPlatform>(simFolder.path(), options);
        // One barrage server, so that startBarrage has somewhere to connect.
        if (!simFolder.isValid() || !sim->start() || !sim->startBarrageServers(1)) {
            err << "cannot start the simulator" << Qt::endl;
            return 1;
        }
    }
    QStringList login;
    if (!args.isEmpty() && args.first() == QStringLiteral("--login")) {
        if (args.size() < 3) {
            return usage(err);
        }
        login = args.mid(1, 2);
        args = args.mid(3);
    }
    const QList<QStringList> operations = splitOperations(args);
    QVector<const OperationCall*> calls;
    for (const QStringList& operation : operations) {
        const OperationCall* call =
            operation.isEmpty() ? nullptr : findOperation(operation.first());
        const bool releasedBefore = !calls.isEmpty() && calls.last()->name == kRelease;
        if (call == nullptr || releasedBefore) {
            return usage(err);
        }
        calls.append(call);
    }
    ILiveencoderNetService* service = create(&observer, &observer);
    if (service == nullptr) {
        err << "CreateNetService returned null" << Qt::endl;
        return 1;
    }
    // An operation that refuses its arguments answers "error" instead of running.
    bool refused = false;
    QJsonObject report;
    if (!login.isEmpty()) {
        report.insert(QStringLiteral("login"),
                      findOperation(QStringLiteral("login"))->run(*service, login));
    }
    if (calls.size() == 1) {
        const QJsonObject single =
            runOperation(*calls.first(), *service, operations.first().mid(1));
        refused = single.contains(QStringLiteral("error"));
        for (auto it = single.begin(); it != single.end(); ++it) {
            report.insert(it.key(), it.value());
        }
    } else {
        QJsonArray reports;
        for (int i = 0; i < calls.size(); ++i) {
            const QJsonObject one = runOperation(*calls.at(i), *service, operations.at(i).mid(1));
            refused = refused || one.contains(QStringLiteral("error"));
            reports.append(one);
        }
        report.insert(QStringLiteral("calls"), reports);
    }
    out << QJsonDocument(report).toJson(QJsonDocument::Indented);
    out.flush();
    if (calls.last()->name != kRelease) {
        service->stop();
        service->release();
    }
    return refused ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments().mid(1);
    const QString command = args.value(0);
    if (command != QStringLiteral("demo") && command != QStringLiteral("call") &&
        command != QStringLiteral("qr-login")) {
        return usage(err);
    }

    if (command == QStringLiteral("call") && args.value(1) == QStringLiteral("--list")) {
        return listOperations(out);
    }

    ModuleLoader loader;
    if (!loader.load(ModuleLoader::defaultLibraryPath())) {
        err << "cannot load the module: " << loader.errorString() << Qt::endl;
        return 1;
    }
    // Barrage events arrive at any time; in call mode they go to stderr so stdout stays JSON.
    PrintingObserver observer(command == QStringLiteral("demo") ? out : err);
    int exitCode = 0;
    // The module expects a running event loop on the thread that created it.
    QTimer::singleShot(0, &app, [&] {
        if (command == QStringLiteral("qr-login")) {
            exitCode =
                runQrLoginCommand(loader.createNetService(), observer, args.mid(1), out, err);
        } else {
            exitCode = command == QStringLiteral("demo")
                           ? runDemo(loader.createNetService(), observer, args.mid(1), out, err)
                           : runCall(loader.createNetService(), observer, args.mid(1), out, err);
        }
        app.quit();
    });
    app.exec();
    return exitCode;
}
