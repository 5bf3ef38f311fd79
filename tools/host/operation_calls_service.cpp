// `tolvane-host call` entries for the service itself: stopping and releasing it, its settings,
// and the requests a host composes or describes (slots 84, 85, 96, 97).
#include <QJsonDocument>

#include "call_arguments.h"

namespace host_calls {

namespace {

constexpr int32_t kDefaultTimeoutMs = 30000;

// Request items on the command line: "h:KEY=VALUE" a header, "q:KEY=VALUE" a query item,
// "f:KEY=VALUE" a form item (POST only), "ms:N" the time-out. Anything else is refused by name.
struct RequestItems {
    ParamList headers;
    ParamList query;
    ParamList form;
    int32_t timeoutMs = kDefaultTimeoutMs;
    QString refused;
};

RequestItems requestItems(const QStringList& args, int first, bool withForm) {
    RequestItems items;
    for (int i = first; i < args.size(); ++i) {
        const QString item = args.at(i);
        const int colon = item.indexOf(QLatin1Char(':'));
        const QString group = item.left(colon);
        const QString rest = item.mid(colon + 1);
        const int equals = rest.indexOf(QLatin1Char('='));
        const QPair<QString, QString> pair(rest.left(equals),
                                           equals < 0 ? QString() : rest.mid(equals + 1));
        bool number = false;
        const int timeoutMs = rest.toInt(&number);
        if (colon > 0 && number && group == QStringLiteral("ms")) {
            items.timeoutMs = timeoutMs;
        } else if (colon > 0 && equals > 0 && group == QStringLiteral("h")) {
            items.headers.append(pair);
        } else if (colon > 0 && equals > 0 && group == QStringLiteral("q")) {
            items.query.append(pair);
        } else if (withForm && colon > 0 && equals > 0 && group == QStringLiteral("f")) {
            items.form.append(pair);
        } else if (items.refused.isEmpty()) {
            items.refused = item;
        }
    }
    return items;
}

// A JSON reply is shown as JSON, anything else as text.
QJsonObject replyOutputs(bool result, const QByteArray& reply) {
    const QJsonDocument document = QJsonDocument::fromJson(reply);
    QJsonValue shown = QString::fromUtf8(reply);
    if (document.isObject()) {
        shown = document.object();
    } else if (document.isArray()) {
        shown = document.array();
    }
    return withOutputs(result, {{"reply", shown}});
}

QJsonObject refusedItem(const QString& item) {
    return {
        {"error",
         QStringLiteral("unusable request item '%1' (use h:, q:, f:KEY=VALUE or ms:N)").arg(item)}};
}

RequestDescriptor describedRequest(const QStringList& args, const RequestItems& items) {
    RequestDescriptor request;
    request.kind = intArg(args, 0);
    request.path = args.value(1);
    request.groupA = items.headers;
    request.groupB = items.query;
    request.groupC = items.form;
    request.timeoutMs = items.timeoutMs;
    return request;
}

}  // namespace

void addServiceCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("stop", "", [](S& s, A) {
        s.stop();
        return resultOnly(QJsonValue());
    });
    // The caller must not touch the service afterwards; main() knows this entry by name.
    add("release", "", [](S& s, A) {
        s.release();
        return resultOnly(QJsonValue());
    });
    add("setClientVersion", "DEVICE_ID VERSION", [](S& s, A a) {
        s.setClientVersion(arg(a, 0), arg(a, 1));
        std::string userDevice;
        s.getUserDevice(userDevice);
        return withOutputs(QJsonValue(), {{"userDevice", text(userDevice)}});
    });
    add("startServerTimeSync", "", [](S& s, A) {
        s.startServerTimeSync();
        return withOutputs(QJsonValue(), {{"serverTime", QString::number(s.getServerTime())}});
    });
    add("getEmptyText", "", [](S& s, A) {
        std::string value = "unchanged";
        s.getEmptyText(value);
        return withOutputs(QJsonValue(), {{"text", text(value)}});
    });
    add("setProxy", "PROXY", [](S& s, A a) {
        s.setProxy(arg(a, 0));
        return resultOnly(QJsonValue());
    });
    add("getRequest", "URL [ITEM...]", [](S& s, A a) {
        const RequestItems items = requestItems(a, 1, false);
        if (!items.refused.isEmpty()) {
            return refusedItem(items.refused);
        }
        QByteArray reply;
        const bool r = s.getRequest(reply, arg(a, 0), items.headers, items.query, items.timeoutMs);
        return replyOutputs(r, reply);
    });
    add("postRequest", "URL [ITEM...]", [](S& s, A a) {
        const RequestItems items = requestItems(a, 1, true);
        if (!items.refused.isEmpty()) {
            return refusedItem(items.refused);
        }
        QByteArray reply;
        const bool r = s.postRequest(reply, arg(a, 0), items.headers, items.query, items.form,
                                     items.timeoutMs);
        return replyOutputs(r, reply);
    });
    add("requestGet", "KIND PATH [ITEM...]", [](S& s, A a) {
        const RequestItems items = requestItems(a, 2, false);
        if (!items.refused.isEmpty()) {
            return refusedItem(items.refused);
        }
        QByteArray reply;
        const bool r = s.requestGet(reply, describedRequest(a, items));
        return replyOutputs(r, reply);
    });
    add("requestPost", "KIND PATH [ITEM...]", [](S& s, A a) {
        const RequestItems items = requestItems(a, 2, true);
        if (!items.refused.isEmpty()) {
            return refusedItem(items.refused);
        }
        QByteArray reply;
        const bool r = s.requestPost(reply, describedRequest(a, items));
        return replyOutputs(r, reply);
    });
}

}  // namespace host_calls
