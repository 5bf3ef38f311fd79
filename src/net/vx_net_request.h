#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QUrlQuery>
#include <cstdint>
#include <string>

#include "net/curl_session.h"
#include "net/endpoints.h"
#include "net/operation_request.h"
#include "net/param_list.h"
#include "tolvane/breadcrumb.h"
#include "tolvane/request_descriptor.h"

// Sends the platform's signed requests synchronously over libcurl and hands back either the
// server's body or a made-up {error, msg, data} reply, so that every caller parses one
// format. One connection per host is kept between requests, so a burst of operations pays
// one TCP and TLS handshake. Not thread-safe apart from abortTransfers(): the service calls it
// from its own thread.
class VxNetRequest : public QObject {
    Q_OBJECT

public:
    // The environment index and the address tables (default.data) are taken now and kept.
    VxNetRequest(int environment, BreadcrumbSink* sink, QObject* parent = nullptr);
    ~VxNetRequest() override;

    bool cprGet(QByteArray& reply, int kind, const QString& path, ParamList groupA,
                ParamList groupB, int timeoutMs);
    bool cprPost(QByteArray& reply, int kind, const QString& path, ParamList groupA,
                 ParamList groupB, ParamList groupC, int timeoutMs);

    // For callers that compose the URL themselves; the query replaces the URL's own.
    bool cprSyncGet(QByteArray& reply, const QUrl& url, const QUrlQuery& query,
                    const ParamList& headers, int timeoutMs);
    bool cprSyncPost(QByteArray& reply, const QUrl& url, const QUrlQuery& query,
                     const ParamList& headers, const ParamList& form, int timeoutMs);

    // The descriptor's common keys are added and filled, then it is signed and sent.
    bool requestGet(QByteArray& reply, RequestDescriptor descriptor,
                    const tolvane::net::CommonValues& common);
    bool requestPost(QByteArray& reply, RequestDescriptor descriptor,
                     const tolvane::net::CommonValues& common);

    // A request an operation row prepared; failures are logged as cprGet and cprPost log them.
    bool sendPrepared(QByteArray& reply, const tolvane::net::PreparedRequest& request,
                      int timeoutMs);

    // The "User-Device" value every request carries.
    void setDeviceHeader(const QByteArray& value);
    QByteArray deviceHeader() const { return deviceHeader_; }

    // Proxy for http and https requests alike; empty turns it off.
    void setProxy(const std::string& proxy);
    std::string proxy() const { return proxy_; }

    // PEM file of authorities trusted beside the system's. Starts as TOLVANE_CA_FILE.
    void setCaFile(const std::string& path);

    int environment() const { return environment_; }

    // From any thread: the request in flight fails at once as "no answer", and so does every
    // later one. For a client whose owner is shutting down.
    void abortTransfers() { session_.abort(); }

private:
    bool send(bool isPost, const std::string& url, std::string query,
              tolvane::net::HeaderMap headers, std::string body, int timeoutMs, QByteArray& reply,
              const QString& errorLine);
    tolvane::net::HeaderMap baseHeaders() const;

    [[maybe_unused]] int32_t reserved_ = 0;
    int32_t environment_ = 0;
    QByteArray deviceHeader_;
    std::string proxy_;
    BreadcrumbSink* breadcrumbSink_ = nullptr;
    VxEndpoints endpoints_;
    std::string caFile_;
    tolvane::net::CurlSession session_;
};
