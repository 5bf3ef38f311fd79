#include "net/operation_request.h"

#include "net/signing.h"

namespace tolvane::net {

namespace {

const QString kAid = QStringLiteral("aid");
const QString kTime = QStringLiteral("time");
const QString kAuth = QStringLiteral("auth");
const QPair<QString, QString> kClientSys{QStringLiteral("client_sys"), QStringLiteral("pc")};

PreparedRequest prepareHostRow(const OperationRow& row, const ParamList& items,
                               const CommonValues& common, const VxEndpoints& endpoints,
                               int environment, const ParamList& extraHeaders) {
    PreparedRequest request;
    request.method = row.method;
    request.url = endpoints.host(row.kind, environment) + row.path;
    request.headers = extraHeaders;
    const bool isPost = row.method != HttpMethod::Get;
    if (isPost) {
        request.form = items;
    } else {
        request.query = items;
    }
    if (row.common == CommonPlacement::None) {
        if (row.clientSys) {
            request.query.append(kClientSys);
        }
        return request;
    }
    // The signature's first list is what the query carries besides aid, time and auth.
    ParamList signedQuery = request.query;
    request.query.append(qMakePair(kAid, common.aid));
    if (row.clientSys) {
        request.query.append(kClientSys);
        signedQuery.append(kClientSys);
    }
    const QString time = QString::number(common.time);
    const QString auth = signWithCommonValues(QString::fromLatin1(row.signingPath), common.time,
                                              signedQuery, request.form);
    request.query.append(qMakePair(kTime, time));
    request.query.append(qMakePair(kAuth, auth));
    if (row.headerSignature) {
        request.headers.append(qMakePair(kAid, common.aid));
        request.headers.append(qMakePair(kTime, time));
        request.headers.append(qMakePair(kAuth, auth));
    }
    return request;
}

PreparedRequest prepareBaseRow(const OperationRow& row, const ParamList& items,
                               const CommonValues& common, const VxEndpoints& endpoints,
                               int environment, const ParamList& extraHeaders) {
    ParamList groupA = extraHeaders;
    ParamList groupB;
    ParamList groupC;
    const bool isPost = row.method != HttpMethod::Get;
    if (!isPost) {
        groupB = items;
    }
    if (row.common != CommonPlacement::None) {
        ParamList& commonGroup = row.common == CommonPlacement::Headers ? groupA : groupB;
        commonGroup.append(qMakePair(kAid, common.aid));
        if (row.clientSys) {
            commonGroup.append(kClientSys);
        }
        commonGroup.append(qMakePair(kTime, QString::number(common.time)));
    }
    if (isPost) {
        groupC = items;
    }
    const QString path = QString::fromLatin1(row.path);
    signByKind(row.kind, environment, path, groupA, groupB, groupC);

    PreparedRequest request;
    request.method = row.method;
    request.url = endpoints.composeUrl(row.kind, environment, path).toStdString();
    request.headers = std::move(groupA);
    request.query = std::move(groupB);
    request.form = std::move(groupC);
    return request;
}

}  // namespace

PreparedRequest prepareOperation(const OperationRow& row, const ParamList& items,
                                 const CommonValues& common, const VxEndpoints& endpoints,
                                 int environment, const ParamList& extraHeaders) {
    return row.onHostTable
               ? prepareHostRow(row, items, common, endpoints, environment, extraHeaders)
               : prepareBaseRow(row, items, common, endpoints, environment, extraHeaders);
}

std::string sentUrl(const PreparedRequest& request) {
    const std::string query = encodedPairs(request.query);
    return query.empty() ? request.url : request.url + "?" + query;
}

std::string encodedPairs(const ParamList& list) {
    QByteArray text;
    for (const auto& [key, value] : list) {
        if (!text.isEmpty()) {
            text += '&';
        }
        text += key.toUtf8() + '=' + value.toUtf8().toPercentEncoding();
    }
    return text.toStdString();
}

}  // namespace tolvane::net
