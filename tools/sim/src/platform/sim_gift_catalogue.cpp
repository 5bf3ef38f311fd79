#include "platform/sim_gift_catalogue.h"

#include <QJsonDocument>
#include <string>
#include <vector>

#include "http/sim_http_server.h"
#include "http/sim_replies.h"

namespace tolvane::sim {

namespace {

// The gift service's answer for an id it has never heard of.
constexpr int kUnknownItemCode = 1404;

struct SimSkin {
    int32_t id;
    const char* name;
};

struct SimGift {
    int32_t id;
    const char* name;
    int32_t price;
    std::vector<SimSkin> skins;
    bool listed;
};

struct SimProp {
    int32_t id;
    const char* name;
    int32_t price;
    bool listed;
};

const std::vector<SimGift>& gifts() {
    static const std::vector<SimGift> all = {
        {100, "Rose", 10, {{1001, "Golden rose"}}, true},
        {101, "Glow stick", 20, {}, true},
        {102, "Cheer", 50, {}, true},
        {103, "Rocket", 500, {{1031, "Night rocket"}, {1032, "Neon rocket"}}, true},
        {104, "Crown", 1000, {}, true},
        {105, "Yacht", 5000, {}, true},
        {106, "Comet", 200, {{1061, "Blue comet"}}, false},
        {107, "Lantern", 30, {}, false},
    };
    return all;
}

const std::vector<SimProp>& props() {
    static const std::vector<SimProp> all = {
        {300, "Glow card", 1, true},
        {301, "Noble pass", 100, true},
        {302, "Rename card", 50, true},
        {305, "Lucky charm", 5, false},
    };
    return all;
}

QString icon(const char* kind, int32_t id) {
    return QStringLiteral("https://img.tolvane.example/%1/%2.png").arg(QLatin1String(kind)).arg(id);
}

QJsonObject giftObject(const SimGift& gift) {
    QJsonArray skins;
    for (const SimSkin& skin : gift.skins) {
        skins.append(QJsonObject{{"id", skin.id},
                                 {"name", QString::fromUtf8(skin.name)},
                                 {"icon", icon("skin", skin.id)}});
    }
    // Prices come as text, as the gift service has always written them.
    return QJsonObject{{"id", gift.id},
                       {"name", QString::fromUtf8(gift.name)},
                       {"price", QString::number(gift.price)},
                       {"icon", icon("gift", gift.id)},
                       {"skins", skins}};
}

QJsonObject propObject(const SimProp& prop) {
    return QJsonObject{{"id", prop.id},
                       {"name", QString::fromUtf8(prop.name)},
                       {"price", prop.price},
                       {"icon", icon("prop", prop.id)}};
}

SimReply singleReply(const std::optional<QJsonObject>& item) {
    return item ? okReply(*item) : errorReply(kUnknownItemCode, QStringLiteral("item not found"));
}

// The catalogue's lists are static files written for browsers: JSON wrapped in a callback, and
// no "error" member, since a file has no refusal to report.
SimReply wrappedList(const QJsonArray& list) {
    const QJsonObject body{{"data", QJsonObject{{"list", list}}}};
    std::string text = "VXConfigCallback(";
    text += QJsonDocument(body).toJson(QJsonDocument::Compact).toStdString();
    text += ")";
    return SimReply{200, text, "application/javascript"};
}

QJsonArray levels(const char* idKey, const char* kind, const std::vector<const char*>& names) {
    QJsonArray list;
    int32_t id = 1;
    for (const char* name : names) {
        list.append(
            QJsonObject{{idKey, id}, {"name", QString::fromUtf8(name)}, {"icon", icon(kind, id)}});
        ++id;
    }
    return list;
}

int32_t idParam(const SimRequest& request, const char* key) {
    return QString::fromStdString(request.queryValue(key)).toInt();
}

}  // namespace

namespace gift_catalogue {

QJsonArray templateGifts() {
    QJsonArray list;
    for (const SimGift& gift : gifts()) {
        if (gift.listed) {
            list.append(giftObject(gift));
        }
    }
    return list;
}

QJsonArray listedProps() {
    QJsonArray list;
    for (const SimProp& prop : props()) {
        if (prop.listed) {
            list.append(propObject(prop));
        }
    }
    return list;
}

std::optional<QJsonObject> gift(int32_t id) {
    for (const SimGift& gift : gifts()) {
        if (gift.id == id) {
            return giftObject(gift);
        }
    }
    return std::nullopt;
}

std::optional<QJsonObject> prop(int32_t id) {
    for (const SimProp& prop : props()) {
        if (prop.id == id) {
            return propObject(prop);
        }
    }
    return std::nullopt;
}

}  // namespace gift_catalogue

void addGiftRoutes(SimHttpServer& server) {
    using namespace gift_catalogue;
    SimRouteTable& routes = server.routes();
    // The gift service (base-address kind 11) signs nothing.
    auto gift = [&routes](const char* path, SimHandler handler) {
        routes.add({"GET", SimAddressTable::Base, 11, std::string("/") + path, path,
                    SimSignRule::None, std::move(handler)});
    };
    gift("api/gift/v2/web/template",
         [](const SimRequest&) { return wrappedList(templateGifts()); });
    gift("api/prop/v1/web/list", [](const SimRequest&) { return wrappedList(listedProps()); });
    gift("api/gift/v2/web/single",
         [](const SimRequest& r) { return singleReply(gift_catalogue::gift(idParam(r, "gid"))); });
    gift("api/prop/v1/web/single",
         [](const SimRequest& r) { return singleReply(prop(idParam(r, "pid"))); });
    gift("api/gift/v1/web/commonConfig", [](const SimRequest&) {
        QJsonArray batches;
        int32_t id = 1;
        for (const int count : {10, 66, 520}) {
            batches.append(QJsonObject{
                {"id", id++}, {"name", QStringLiteral("x%1").arg(count)}, {"count", count}});
        }
        return wrappedList(batches);
    });

    // The configuration service (host kind 4) serves static files.
    auto file = [&routes](const char* path, QJsonArray list) {
        routes.add({"GET", SimAddressTable::Host, 4, path, "", SimSignRule::None,
                    [list](const SimRequest&) { return wrappedList(list); }});
    };
    file("/resource/common/property_info.json",
         levels("id", "property", {"Experience card", "Name colour", "Entrance banner"}));
    file("/resource/noble/openeffect/web.json",
         levels("noble_level", "noble", {"Knight", "Viscount", "Earl", "Duke", "King"}));
    file("/resource/common/fans_medal_web_v3.json",
         levels("level", "medal", {"Sprout", "Leaf", "Branch", "Tree"}));
    file("/resource/common/config/inter_com_w_diamond_fans.json",
         levels("level", "diamond", {"Diamond fan", "Star diamond fan"}));
}

}  // namespace tolvane::sim
