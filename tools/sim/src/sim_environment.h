#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <memory>
#include <string>

#include "http/sim_certificate_authority.h"
#include "http/sim_http_server.h"

namespace tolvane::sim {

// The simulator as tests and the demo use it: a running server and a default.data that
// points the module (and the platform libraries) at it through TOLVANE_DEFAULT_DATA.
class SimEnvironment {
public:
    struct Options {
        int environment = 0;  // "app.domain"; also the server's signing mode
        bool https = false;   // serve HTTPS with a certificate of a fresh test CA
        int port = 0;         // 0 lets the system pick a free port
    };

    // default.data is written into `folder`.
    explicit SimEnvironment(const QString& folder);
    SimEnvironment(const QString& folder, Options options);
    ~SimEnvironment();
    SimEnvironment(const SimEnvironment&) = delete;
    SimEnvironment& operator=(const SimEnvironment&) = delete;

    // Starts the server, writes default.data and sets TOLVANE_DEFAULT_DATA.
    bool start();
    // Stops the server and puts TOLVANE_DEFAULT_DATA back as it was.
    void stop();

    SimHttpServer& http() { return server_; }
    std::string origin() const { return server_.origin(); }
    QString defaultDataPath() const;
    // The CA file a client must trust for HTTPS; empty over plain HTTP.
    std::string caFile() const;

    // Keys merged into default.data beside "app.domain" and "endpoints", for settings of the
    // platform libraries; takes effect at the next writeDefaultData().
    void setExtraSettings(const QJsonObject& settings) { extra_ = settings; }
    bool writeDefaultData() const;

private:
    QString folder_;
    Options options_;
    std::unique_ptr<SimCertificateAuthority> authority_;
    SimHttpServer server_;
    QJsonObject extra_;
    bool envSet_ = false;
    bool hadEnv_ = false;
    QByteArray oldEnv_;
};

}  // namespace tolvane::sim
