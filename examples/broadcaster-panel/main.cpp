// broadcaster-panel: a Qt Widgets host that walks the whole broadcast road (QR or password
// login, category and tags, push lines, going live, the live room's barrage, stopping) without
// ever blocking its window: every operation runs on the service's own thread.
//   broadcaster-panel              the platform that default.data (or TOLVANE_DEFAULT_DATA) names
//   broadcaster-panel --sim [--sim-arg ARG]...   a tolvane-sim of the installed package
#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <memory>

#include "login_page.h"
#include "panel_window.h"
#include "sim_process.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(QStringLiteral("A reference broadcaster panel"));
    options.addHelpOption();
    const QCommandLineOption withSim(
        QStringLiteral("sim"), QStringLiteral("Start tolvane-sim and use it as the platform."));
    const QCommandLineOption simArgument(QStringLiteral("sim-arg"),
                                         QStringLiteral("Pass ARG on to tolvane-sim (repeatable)."),
                                         QStringLiteral("ARG"));
    options.addOption(withSim);
    options.addOption(simArgument);
    options.process(app);

    std::unique_ptr<PanelWindow> window;
    const auto openWindow = [&window] {
        window = std::make_unique<PanelWindow>();
        window->show();
    };
    if (!options.isSet(withSim)) {
        openWindow();
        return app.exec();
    }

    SimProcess sim;
    QObject::connect(&sim, &SimProcess::ready, &app, [&] {
        // The module reads the file this names when the service is built.
        qputenv("TOLVANE_DEFAULT_DATA", sim.defaultDataPath().toLocal8Bit());
        openWindow();
        window->loginPage().setPhoneCommand(
            QStringLiteral("%1 qr confirm %2").arg(SimProcess::program(), sim.origin()));
        window->setWindowTitle(window->windowTitle() + QStringLiteral(" \u2014 simulator ") +
                               sim.origin());
    });
    QObject::connect(&sim, &SimProcess::failed, &app, [&app](const QString& reason) {
        QMessageBox::critical(nullptr, QStringLiteral("Broadcaster panel"),
                              QStringLiteral("The simulator did not start: %1").arg(reason));
        app.exit(1);
    });
    sim.start(options.values(simArgument));
    const int code = app.exec();
    window.reset();  // the service goes before the simulator it talks to
    return code;
}
