#include "net/vx_net_request.h"

#include <utility>

#include "net/reply_check.h"
#include "net/session_text.h"
#include "net/signing.h"
#include "log/log_writer.h"

namespace {

using tolvane::net::encodedPairs;
using tolvane::net::HeaderMap;

void addHeaders(HeaderMap& headers, const ParamList& list) {
    for (const auto& [key, value] : list) {
        headers[key.toStdString()] = value.toStdString();
    }
}

const char* const kFormContentType = "application/x-www-form-urlencoded";

}  // namespace

VxNetRequest::VxNetRequest(int environment, BreadcrumbSink* sink, QObject* parent)
    : QObject(parent),
      environment_(environment),
      deviceHeader_(tolvane::net::userDeviceValue("00_00_00_00_FF_FF", "v1.0.0.0")),
      breadcrumbSink_(sink),
      endpoints_(VxEndpoints::fromDefaultData()),
      caFile_(qEnvironmentVariable("TOLVANE_CA_FILE").toStdString()) {}

VxNetRequest::~VxNetRequest() = default;

void VxNetRequest::setDeviceHeader(const QByteArray& value) {
    deviceHeader_ = value;
}

void VxNetRequest::setProxy(const std::string& proxy) {
    proxy_ = proxy;
}

void VxNetRequest::setCaFile(const std::string& path) {
    caFile_ = path;
}

HeaderMap VxNetRequest::baseHeaders() const {
    HeaderMap headers;
    headers["User-Device"] = deviceHeader_.toStdString();
    return headers;
}

bool VxNetRequest::cprGet(QByteArray& reply, int kind, const QString& path, ParamList groupA,
                          ParamList groupB, int timeoutMs) {
    const QString url = endpoints_.composeUrl(kind, environment_, path);
    tolvane::net::signByKind(kind, environment_, path, groupA, groupB, ParamList());
    HeaderMap headers = baseHeaders();
    addHeaders(headers, groupA);
    return send(false, url.toStdString(), encodedPairs(groupB), std::move(headers), {}, timeoutMs,
                reply, QStringLiteral("cprGet error:%1"));
}

bool VxNetRequest::cprPost(QByteArray& reply, int kind, const QString& path, ParamList groupA,
                           ParamList groupB, ParamList groupC, int timeoutMs) {
    const QString url = endpoints_.composeUrl(kind, environment_, path);
    tolvane::net::signByKind(kind, environment_, path, groupA, groupB, groupC);
    HeaderMap headers = baseHeaders();
    addHeaders(headers, groupA);
    headers["Content-Type"] = kFormContentType;
    return send(true, url.toStdString(), encodedPairs(groupB), std::move(headers),
                encodedPairs(groupC), timeoutMs, reply, QStringLiteral("cprPost error:%1"));
}

bool VxNetRequest::cprSyncGet(QByteArray& reply, const QUrl& url, const QUrlQuery& query,
                              const ParamList& headerPairs, int timeoutMs) {
    // The URL's text as QUrl shows it, with spaces and non-ASCII characters percent-encoded
    // because libcurl refuses a URL with raw blanks in it.
    QUrl full = url;
    full.setQuery(query);
    HeaderMap headers = baseHeaders();
    addHeaders(headers, headerPairs);
    return send(false, full.toString(QUrl::FullyEncoded).toStdString(), {}, std::move(headers), {},
                timeoutMs, reply, QStringLiteral("cprGet error:%1"));
}

bool VxNetRequest::cprSyncPost(QByteArray& reply, const QUrl& url, const QUrlQuery& query,
                               const ParamList& headerPairs, const ParamList& form, int timeoutMs) {
    QUrl full = url;
    full.setQuery(query);
    HeaderMap headers = baseHeaders();
    addHeaders(headers, headerPairs);
    headers["Content-Type"] = kFormContentType;
    return send(true, full.toString(QUrl::FullyEncoded).toStdString(), {}, std::move(headers),
                encodedPairs(form), timeoutMs, reply, QStringLiteral("cprGet error:%1"));
}

bool VxNetRequest::sendPrepared(QByteArray& reply, const tolvane::net::PreparedRequest& request,
                                int timeoutMs) {
    const bool isPost = request.method == tolvane::net::HttpMethod::Post;
    HeaderMap headers = baseHeaders();
    addHeaders(headers, request.headers);
    if (isPost) {
        headers["Content-Type"] = kFormContentType;
    }
    return send(isPost, request.url, encodedPairs(request.query), std::move(headers),
                encodedPairs(request.form), timeoutMs, reply,
                isPost ? QStringLiteral("cprPost error:%1") : QStringLiteral("cprGet error:%1"));
}

bool VxNetRequest::requestGet(QByteArray& reply, RequestDescriptor descriptor,
                              const tolvane::net::CommonValues& common) {
    tolvane::net::addPlaceholdersByKind(descriptor, common);
    return cprGet(reply, descriptor.kind, descriptor.path, std::move(descriptor.groupA),
                  std::move(descriptor.groupB), descriptor.timeoutMs);
}

bool VxNetRequest::requestPost(QByteArray& reply, RequestDescriptor descriptor,
                               const tolvane::net::CommonValues& common) {
    tolvane::net::addPlaceholdersByKind(descriptor, common);
    return cprPost(reply, descriptor.kind, descriptor.path, std::move(descriptor.groupA),
                   std::move(descriptor.groupB), std::move(descriptor.groupC),
                   descriptor.timeoutMs);
}

bool VxNetRequest::send(bool isPost, const std::string& url, std::string query, HeaderMap headers,
                        std::string body, int timeoutMs, QByteArray& reply,
                        const QString& errorLine) {
    session_.setUrl(url);
    session_.setQuery(std::move(query));
    session_.setHeaders(std::move(headers));
    session_.setBody(body);
    session_.setTimeoutMs(timeoutMs);
    session_.setProxy(proxy_);
    session_.setCaFile(caFile_);
    const tolvane::net::CurlResponse response = isPost ? session_.post() : session_.get();

    if (breadcrumbSink_ != nullptr) {
        VxBreadcrumb<VxBreadcrumb_Http> crumb;
        crumb.category = 4;
        crumb.message = isPost ? "cprPost" : "cprGet";
        crumb.level = 1;
        crumb.data = response.body;
        crumb.part.url = session_.fullUrl();
        crumb.part.method = isPost ? "POST" : "GET";
        crumb.part.statusCode = static_cast<int32_t>(response.statusCode);
        crumb.part.errorText = response.errorMessage;
        breadcrumbSink_->onBreadcrumb(crumb);
    }

    if (tolvane::net::checkReply(reply, response)) {
        return true;
    }
    using tolvane::log::kMainLog;
    tolvane::log::writeLine(kMainLog, errorLine.arg(QString::fromUtf8(reply)));
    tolvane::log::writeLine(kMainLog,
                            QStringLiteral("url:") + QString::fromStdString(session_.fullUrl()));
    if (isPost) {
        tolvane::log::writeLine(kMainLog, QStringLiteral("post:") + QString::fromStdString(body));
    }
    return false;
}
