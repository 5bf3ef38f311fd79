#include "sim_environment.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include "relay/sim_relay.h"

namespace tolvane::sim {

namespace {
const char kDefaultDataVariable[] = "TOLVANE_DEFAULT_DATA";
}

SimEnvironment::SimEnvironment(const QString& folder) : SimEnvironment(folder, Options()) {}

SimEnvironment::SimEnvironment(const QString& folder, Options options)
    : folder_(folder), options_(options), server_(options.environment) {}

SimEnvironment::~SimEnvironment() {
    stop();
}

QString SimEnvironment::defaultDataPath() const {
    return QDir(folder_).filePath(QStringLiteral("default.data"));
}

std::string SimEnvironment::origin() const {
    if (!relay_) {
        return server_.origin();
    }
    const std::string scheme = options_.https ? "https" : "http";
    return scheme + "://" + SimRelay::host() + ":" + std::to_string(relay_->port());
}

std::string SimEnvironment::caFile() const {
    return authority_ ? authority_->caFile() : std::string();
}

bool SimEnvironment::start() {
    if (server_.isRunning()) {
        return false;
    }
    bool started = false;
    if (options_.https) {
        if (!authority_) {
            authority_ = std::make_unique<SimCertificateAuthority>();
        }
        started = authority_->isValid() &&
                  server_.startHttps(authority_->trustedIdentity(), options_.port);
    } else {
        started = server_.start(options_.port);
    }
    if (started && options_.link.relays()) {
        const int port = options_.https ? server_.httpsPort() : server_.httpPort();
        relay_ = std::make_unique<SimRelay>(SimRelay::host(), static_cast<uint16_t>(port),
                                            options_.link);
        started = relay_->start();
    }
    if (!started || !writeDefaultData()) {
        relay_.reset();
        server_.stop();
        return false;
    }
    if (!envSet_) {
        hadEnv_ = qEnvironmentVariableIsSet(kDefaultDataVariable);
        oldEnv_ = qgetenv(kDefaultDataVariable);
        envSet_ = true;
    }
    qputenv(kDefaultDataVariable, QFile::encodeName(defaultDataPath()));
    return true;
}

void SimEnvironment::stop() {
    relay_.reset();
    server_.stop();
    if (envSet_) {
        if (hadEnv_) {
            qputenv(kDefaultDataVariable, oldEnv_);
        } else {
            qunsetenv(kDefaultDataVariable);
        }
        envSet_ = false;
    }
}

bool SimEnvironment::writeDefaultData() const {
    QJsonObject root = extra_;
    root.insert(QStringLiteral("app.domain"), options_.environment);
    // Single cells given in the extra settings ("base", "host") stay beside the origin.
    QJsonObject endpoints = extra_.value(QStringLiteral("endpoints")).toObject();
    endpoints.insert(QStringLiteral("origin"), QString::fromStdString(origin()));
    root.insert(QStringLiteral("endpoints"), endpoints);
    QFile file(defaultDataPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    const QByteArray content = QJsonDocument(root).toJson();
    return file.write(content) == content.size();
}

}  // namespace tolvane::sim
