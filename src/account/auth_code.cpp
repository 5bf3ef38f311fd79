// Authorisation of the platform's other applications: the ports they listen on, and a code
// that stands for the anchor's long token for a while. Both go to the passport host with the
// signature repeated in the headers.
#include <QJsonArray>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "service/vx_net_service_imp.h"

namespace {

using tolvane::net::HostKind;
using tolvane::net::HttpMethod;

const tolvane::net::OperationRow& kLoginAuthPorts = tolvane::net::registerOperation(
    hostRow("getLoginAuthPorts", HttpMethod::Get, HostKind::Passport, "/japi/app/auth/port",
            "japi/app/auth/port")
        .withHeaderSignature());

const tolvane::net::OperationRow& kLoginAuthCode = tolvane::net::registerOperation(
    hostRow("getLoginAuthCode", HttpMethod::Post, HostKind::Passport, "/japi/app/auth/generateCode",
            "japi/app/auth/generateCode")
        .withHeaderSignature());

// -1 marks an entry that is not a port; other negative numbers are the platform's to explain.
constexpr int32_t kNotAPort = -1;

}  // namespace

// slot 73
int32_t VxNetServiceImp::getLoginAuthPorts(std::vector<int32_t>& ports) {
    const ParamList items{{QStringLiteral("authType"), QStringLiteral("VXTool")},
                          {QStringLiteral("bizType"), QStringLiteral("13")}};
    return runOperation(kLoginAuthPorts, items, nullptr, [&](const QByteArray& reply) {
        QJsonObject data;
        const int32_t result = parser_.parseDataObject("parseLoginAuthPorts", reply, data, nullptr);
        if (result != 0) {
            return result;
        }
        QJsonArray list;
        DataParser::readArray(data, QStringLiteral("port"), list);
        for (const QJsonValue& entry : list) {
            const int32_t port = entry.toInt(kNotAPort);
            if (port != kNotAPort) {
                ports.push_back(port);
            }
        }
        return int32_t{0};
    });
}

// slot 74
int32_t VxNetServiceImp::getLoginAuthCode(const std::string& bizType, std::string& refererInCodeOut,
                                          int32_t& expire) {
    const ParamList items{{QStringLiteral("bizType"), QString::fromStdString(bizType)},
                          {QStringLiteral("longToken"), QString::fromStdString(longToken_)},
                          {QStringLiteral("did"), QString::fromStdString(deviceId_)}};
    const ParamList headers{{QStringLiteral("referer"), QString::fromStdString(refererInCodeOut)}};
    return runOperation(
        kLoginAuthCode, items, nullptr,
        [&](const QByteArray& reply) {
            // The envelope check clears this preset before anyone can read it; the platform's
            // client does the same, and the order is kept so both report alike.
            parser_.setLastErrorMessage(u8"服务器数据错误，请刷新后重试");
            QJsonObject data;
            const int32_t result =
                parser_.parseDataObject("parseLoginAuthCode", reply, data, nullptr);
            if (result != 0) {
                return result;
            }
            refererInCodeOut =
                DataParser::readString(data, QStringLiteral("code"), QString()).toStdString();
            expire = DataParser::readInt(data, QStringLiteral("expire"), 0);
            return int32_t{0};
        },
        nullptr, QStringList(), QString(), headers);
}
