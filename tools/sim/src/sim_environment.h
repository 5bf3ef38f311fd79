#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <memory>
#include <string>

#include "http/sim_certificate_authority.h"
#include "http/sim_http_server.h"
#include "relay/sim_link_shape.h"

namespace tolvane::sim {

class SimRelay;

// The simulator as tests and the demo use it: a running server and a default.data that
// points the module (and the platform libraries) at it through TOLVANE_DEFAULT_DATA.
class SimEnvironment {
public:
    struct Options {
        int environment = 0;  // "app.domain"; also the server's signing mode
        bool https = false;   // serve HTTPS with a certificate of a fresh test CA
        int port = 0;         // 0 lets the system pick a free port
        // A slow line: clients reach the server through a relay that imitates it.
        SimLinkShape link;
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
    // Where clients go: the relay's origin while one imitates a slow line, else the server's.
    std::string origin() const;
    const Options& options() const { return options_; }
    // The relay in front of the server; null without a slow line or before start().
    const SimRelay* relay() const { return relay_.get(); }
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
    std::unique_ptr<SimRelay> relay_;
    QJsonObject extra_;
    bool envSet_ = false;
    bool hadEnv_ = false;
    QByteArray oldEnv_;
};

}  // namespace tolvane::sim
