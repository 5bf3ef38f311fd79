#include <QCoreApplication>
#include <QTextStream>
#include <QTimer>
#include <cstdio>

#include "demo.h"
#include "module_loader.h"
#include "printing_observer.h"

namespace {

int usage(QTextStream& err) {
    err << "usage: tolvane-host demo" << Qt::endl;
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || args.first() != QStringLiteral("demo")) {
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
        exitCode = runDemo(loader.createNetService(), observer, out);
        app.quit();
    });
    app.exec();
    return exitCode;
}
