#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTcpServer>
#include <QTemporaryDir>

// A tinyproxy of the test's own on a free loopback port, logging every request it forwards
// into the test's temporary folder. Stopped (by its own process id) when destroyed.
class TinyProxy {
public:
    TinyProxy() {
        // The free port may be taken between probing and binding; try a few times.
        for (int attempt = 0; attempt < 3 && !running(); ++attempt) {
            start(freeLoopbackPort());
        }
    }
    ~TinyProxy() {
        if (process_.state() != QProcess::NotRunning) {
            process_.terminate();
            if (!process_.waitForFinished(3000)) {
                process_.kill();
                process_.waitForFinished(3000);
            }
        }
    }
    TinyProxy(const TinyProxy&) = delete;
    TinyProxy& operator=(const TinyProxy&) = delete;

    bool running() const { return running_; }
    QString address() const { return QStringLiteral("http://127.0.0.1:%1").arg(port_); }

    // Lines tinyproxy wrote for requests it accepted ("GET http://…", "CONNECT host:port").
    QStringList requestLines() const {
        QStringList lines;
        for (const QString& line : log().split('\n')) {
            if (line.contains(QStringLiteral("]: Request (file descriptor"))) {
                lines << line.section(QStringLiteral("): "), 1);
            }
        }
        return lines;
    }

private:
    static quint16 freeLoopbackPort() {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        return probe.serverPort();
    }

    QString log() const {
        QFile file(dir_.filePath(QStringLiteral("tinyproxy.log")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    void start(quint16 port) {
        port_ = port;
        const QString configPath = dir_.filePath(QStringLiteral("tinyproxy.conf"));
        QFile config(configPath);
        config.open(QIODevice::WriteOnly | QIODevice::Truncate);
        config.write(QStringLiteral("Port %1\nListen 127.0.0.1\nTimeout 30\nAllow 127.0.0.1\n"
                                    "LogFile \"%2\"\nLogLevel Info\nMaxClients 20\n"
                                    "ViaProxyName \"tolvane-test-proxy\"\n")
                         .arg(port)
                         .arg(dir_.filePath(QStringLiteral("tinyproxy.log")))
                         .toUtf8());
        config.close();
        QFile::remove(dir_.filePath(QStringLiteral("tinyproxy.log")));
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral("/usr/bin/tinyproxy"),
                       {QStringLiteral("-d"), QStringLiteral("-c"), configPath});
        if (!process_.waitForStarted(3000)) {
            return;
        }
        for (int i = 0; i < 100; ++i) {
            if (log().contains(QStringLiteral("Accepting connections"))) {
                running_ = true;
                return;
            }
            if (process_.waitForFinished(50)) {
                return;  // exited: most likely the port was taken
            }
        }
    }

    QTemporaryDir dir_;
    QProcess process_;
    quint16 port_ = 0;
    bool running_ = false;
};
