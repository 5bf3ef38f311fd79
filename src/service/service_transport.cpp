// The service's transport operations: session texts, the proxy, and requests the host
// describes or composes itself.
#include <QUrlQuery>

#include "liveroom/vx_live_room_info.h"
#include "net/session_text.h"
#include "net/vx_net_request.h"
#include "log/log_writer.h"
#include "service/vx_net_service_imp.h"

namespace {

QUrlQuery toQuery(const ParamList& items) {
    QUrlQuery query;
    for (const auto& item : items) {
        query.addQueryItem(item.first, item.second);
    }
    return query;
}

}  // namespace

// slot 21
bool VxNetServiceImp::getRoomUrl(std::string& url) {
    url = endpoints_.roomUrl(environment_, getRoomId());
    return true;
}

// slot 31
void VxNetServiceImp::getToken(std::string& token) {
    token = sessionToken();
}

// slot 84
bool VxNetServiceImp::getRequest(QByteArray& reply, const std::string& url,
                                 const ParamList& headers, const ParamList& query,
                                 int32_t timeoutMs) {
    logBanner("getRequest");
    requestLog_.write(QStringLiteral("get url: %1").arg(QString::fromStdString(url)));
    return request_->cprSyncGet(reply, QUrl(QString::fromStdString(url)), toQuery(query), headers,
                                timeoutMs);
}

// slot 85
bool VxNetServiceImp::postRequest(QByteArray& reply, const std::string& url,
                                  const ParamList& headers, const ParamList& query,
                                  const ParamList& form, int32_t timeoutMs) {
    logBanner("postRequest");
    requestLog_.write(QStringLiteral("get url: %1").arg(QString::fromStdString(url)));
    return request_->cprSyncPost(reply, QUrl(QString::fromStdString(url)), toQuery(query), headers,
                                 form, timeoutMs);
}

// slot 92
void VxNetServiceImp::getUserDevice(std::string& userDevice) {
    userDevice = tolvane::net::userDeviceValue(deviceId_, clientVersion_).toStdString();
}

// slot 95
void VxNetServiceImp::setProxy(const std::string& proxy) {
    request_->setProxy(proxy);
    liveRoomInfo_->takeRequestSettings();
}

// slot 96
bool VxNetServiceImp::requestGet(QByteArray& reply, const RequestDescriptor& request) {
    return request_->requestGet(reply, request, commonValues());
}

// slot 97
bool VxNetServiceImp::requestPost(QByteArray& reply, const RequestDescriptor& request) {
    return request_->requestPost(reply, request, commonValues());
}
