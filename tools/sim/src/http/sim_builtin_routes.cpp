#include "http/sim_builtin_routes.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include "http/sim_replies.h"

namespace tolvane::sim {

namespace {

// A repeated key becomes an array of its values, so nothing that arrived is hidden.
QJsonObject pairsToJson(const SimPairs& pairs) {
    QJsonObject object;
    for (const auto& pair : pairs) {
        const QString key = QString::fromStdString(pair.first);
        const QJsonValue value = QString::fromStdString(pair.second);
        const QJsonValue existing = object.value(key);
        if (existing.isUndefined()) {
            object.insert(key, value);
        } else if (existing.isArray()) {
            QJsonArray values = existing.toArray();
            values.append(value);
            object.insert(key, values);
        } else {
            object.insert(key, QJsonArray{existing, value});
        }
    }
    return object;
}

SimReply echo(const SimRequest& request) {
    return okReply(QJsonObject{
        {"method", QString::fromStdString(request.method)},
        {"path", QString::fromStdString(request.path)},
        {"query", pairsToJson(request.query)},
        {"headers", pairsToJson(request.headers)},
        {"form", pairsToJson(request.form)},
        {"auth_ok", request.authOk},
        {"signed", QString::fromStdString(request.signingText)},
    });
}

const char kStatusPrefix[] = "/sim/status/";

SimReply status(const SimRequest& request) {
    bool ok = false;
    const int code =
        QString::fromStdString(request.path.substr(sizeof(kStatusPrefix) - 1)).toInt(&ok);
    if (!ok || code < 100 || code > 599) {
        return jsonReply(400, {{"error", 400}, {"data", "no such status"}});
    }
    return jsonReply(code, {{"error", code}, {"data", QStringLiteral("status %1").arg(code)}});
}

}  // namespace

void addBuiltinRoutes(SimRouteTable& routes) {
    const struct {
        const char* name;
        SimSignRule rule;
    } rules[] = {
        {"query", SimSignRule::Query},     {"mobile3", SimSignRule::Mobile3},
        {"mobile2", SimSignRule::Mobile2}, {"common", SimSignRule::CommonLists},
        {"none", SimSignRule::None},
    };
    // The base addresses of kinds 2, 3 and 4 end in these folders.
    const char* const prefixes[] = {"", "/api/v1", "/api/videoPartner", "/api"};
    for (const auto& rule : rules) {
        const std::string signingPath = std::string("sim/echo/") + rule.name;
        for (const char* prefix : prefixes) {
            SimRoute route;
            route.path = std::string(prefix) + "/" + signingPath;
            route.signingPath = signingPath;
            route.rule = rule.rule;
            route.handler = echo;
            routes.add(std::move(route));
        }
    }
    SimRoute statusRoute;
    statusRoute.path = std::string(kStatusPrefix) + "*";
    statusRoute.handler = status;
    routes.add(std::move(statusRoute));
}

}  // namespace tolvane::sim
