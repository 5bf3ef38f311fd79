#include "sim_process.h"

#ifdef __linux__
#include <sys/prctl.h>

#include <csignal>
#endif

void ChildProcess::setupChildProcess() {
#ifdef __linux__
    // Runs in the child between fork and exec: SIGTERM, which the simulator ends cleanly on,
    // once the panel is gone.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
#endif
}

SimProcess::SimProcess(QObject* parent) : QObject(parent) {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&process_, &QProcess::readyReadStandardOutput, this, &SimProcess::readOutput);
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError) {
        emit failed(QStringLiteral("%1: %2").arg(program(), process_.errorString()));
    });
    connect(&process_, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int code) {
                if (defaultData_.isEmpty()) {
                    emit failed(QStringLiteral("tolvane-sim exited with %1").arg(code));
                }
            });
}

SimProcess::~SimProcess() {
    // Its end is expected now, not a failure to report.
    disconnect(&process_, nullptr, this, nullptr);
    if (process_.state() != QProcess::NotRunning) {
        process_.terminate();  // SIGTERM: the simulator stops its servers and exits
        if (!process_.waitForFinished(3000)) {
            process_.kill();
            process_.waitForFinished(1000);
        }
    }
}

QString SimProcess::program() {
    return QStringLiteral(PANEL_SIM_PROGRAM);
}

void SimProcess::start(const QStringList& extraArguments) {
    process_.start(program(),
                   QStringList{QStringLiteral("--data-dir"), folder_.path()} + extraArguments);
}

void SimProcess::readOutput() {
    pending_ += process_.readAllStandardOutput();
    // It prints its origin first and the default.data last, one line each.
    int end;
    while ((end = pending_.indexOf('\n')) >= 0) {
        const QString line = QString::fromUtf8(pending_.left(end)).trimmed();
        pending_.remove(0, end + 1);
        if (origin_.isEmpty()) {
            origin_ = line;
        } else if (line.startsWith(QLatin1String("default.data: "))) {
            defaultData_ = line.mid(14);
            emit ready();
        }
    }
}
