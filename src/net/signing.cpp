#include "net/signing.h"

#include "halyard/auth_code.h"
#include "net/param_list.h"

namespace tolvane::net {

namespace {

const QString kAid = QStringLiteral("aid");
const QString kTime = QStringLiteral("time");
const QString kAuth = QStringLiteral("auth");
const QString kAidValue = QString::fromLatin1(kAppId);

// The mobile services sign a fresh list: their own aid and time first, then the query items.
QString mobileSignatureQuery(const QString& aid, const QString& time, const ParamList& groupB) {
    ParamList list;
    list.append(qMakePair(kAid, aid));
    list.append(qMakePair(kTime, time));
    for (const auto& pair : groupB) {
        if (pair.first != kAid && pair.first != kTime) {
            list.append(pair);
        }
    }
    return queryText(list);
}

}  // namespace

QString signatureString(const QString& path, const QString& query, const QString& extraQuery) {
    QString text = path + QLatin1Char('?') + query + QStringLiteral("%s");
    if (!extraQuery.isEmpty()) {
        text += QLatin1Char('&') + extraQuery;
    }
    return text;
}

QString callSigner(const QString& signatureText, bool live) {
    const QByteArray utf8 = signatureText.toUtf8();
    char* code = live ? GenerateAuthCodeLive(utf8.constData()) : GenerateAuthCode(utf8.constData());
    if (code == nullptr) {
        return QString();
    }
    const QString result = QString::fromUtf8(code);
    FreeAuthCode(code);
    return result;
}

void signByKind(int kind, int environment, const QString& path, ParamList& groupA,
                ParamList& groupB, const ParamList& groupC) {
    const QString queryC = queryText(groupC);
    switch (kind) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
        case 7: {
            const QString queryB = queryText(groupB);
            if (!queryB.isEmpty()) {
                groupB.append(
                    qMakePair(kAuth, callSigner(signatureString(path, queryB, queryC), false)));
            } else {
                const QString queryA = queryText(groupA);
                groupA.append(
                    qMakePair(kAuth, callSigner(signatureString(path, queryA, queryC), false)));
            }
            return;
        }
        case 6:
        case 10: {
            const bool mobile3 = kind == 6;
            const QString aid = mobile3 ? kAidValue : valueOf(groupA, kAid);
            const QString time = valueOf(groupA, kTime, mobile3 ? QStringLiteral("0") : QString());
            const QString text =
                signatureString(path, mobileSignatureQuery(aid, time, groupB), queryC);
            groupA.append(qMakePair(kAuth, callSigner(text, environment != 0)));
            return;
        }
        default:
            // Kinds 8, 9 and 11 are served without signatures.
            return;
    }
}

QString signFixedCommonQuery(const QString& path, qint64 time, const ParamList& list) {
    const QString common =
        QStringLiteral("aid=") + kAidValue + QStringLiteral("&time=") + QString::number(time);
    return callSigner(signatureString(path, common, queryText(list)), false);
}

QString signWithCommonValues(const QString& path, qint64 time, ParamList first,
                             const ParamList& second) {
    first.append(qMakePair(kAid, kAidValue));
    first.append(qMakePair(kTime, QString::number(time)));
    return callSigner(signatureString(path, queryText(first), queryText(second)), false);
}

QString signQtQuery(const QString& path, const QUrlQuery& query) {
    return callSigner(signatureString(path, query.toString(), QString()), false);
}

QString signQtQueryAndList(const QString& path, const QUrlQuery& query, const ParamList& list) {
    return callSigner(signatureString(path, query.toString(), queryText(list)), false);
}

}  // namespace tolvane::net
