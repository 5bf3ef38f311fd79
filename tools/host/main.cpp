#include <QCoreApplication>
#include <QJsonDocument>
#include <QTextStream>
#include <QTimer>

#include "demo.h"
#include "module_loader.h"
#include "operation_calls.h"
#include "printing_observer.h"

namespace {

int usage(QTextStream& err) {
    err << "usage: tolvane-host demo\n"
           "       tolvane-host call [--login NAME PASSWORD] OPERATION [ARGUMENT...]\n"
           "operations:\n";
    for (const OperationCall& call : operationCalls()) {
        err << "  " << call.name << ' ' << call.usage << '\n';
    }
    err.flush();
    return 2;
}

// One operation against whatever environment default.data selects, printed as JSON.
int runCall(CreateNetServiceFunction create, PrintingObserver& observer, QStringList args,
            QTextStream& out, QTextStream& err) {
    QStringList login;
    if (!args.isEmpty() && args.first() == QStringLiteral("--login")) {
        if (args.size() < 3) {
            return usage(err);
        }
        login = args.mid(1, 2);
        args = args.mid(3);
    }
    const OperationCall* call = args.isEmpty() ? nullptr : findOperation(args.first());
    if (call == nullptr) {
        return usage(err);
    }
    ILiveencoderNetService* service = create(&observer, &observer);
    if (service == nullptr) {
        err << "CreateNetService returned null" << Qt::endl;
        return 1;
    }
    QJsonObject report;
    if (!login.isEmpty()) {
        report.insert(QStringLiteral("login"),
                      findOperation(QStringLiteral("login"))->run(*service, login));
    }
    report.insert(QStringLiteral("operation"), call->name);
    const QJsonObject result = call->run(*service, args.mid(1));
    for (auto it = result.begin(); it != result.end(); ++it) {
        report.insert(it.key(), it.value());
    }
    out << QJsonDocument(report).toJson(QJsonDocument::Indented);
    out.flush();
    service->stop();
    service->release();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments().mid(1);
    const QString command = args.value(0);
    if (command != QStringLiteral("demo") && command != QStringLiteral("call")) {
        return usage(err);
    }

    ModuleLoader loader;
    if (!loader.load(ModuleLoader::defaultLibraryPath())) {
        err << "cannot load the module: " << loader.errorString() << Qt::endl;
        return 1;
    }
    PrintingObserver observer(out);
    int exitCode = 0;
    // The module expects a running event loop on the thread that created it.
    QTimer::singleShot(0, &app, [&] {
        exitCode = command == QStringLiteral("demo")
                       ? runDemo(loader.createNetService(), observer, out)
                       : runCall(loader.createNetService(), observer, args.mid(1), out, err);
        app.quit();
    });
    app.exec();
    return exitCode;
}
