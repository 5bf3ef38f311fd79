#include "liveroom/catalogue_parsers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "log/log_writer.h"
#include "parse/data_parser.h"

namespace tolvane::liveroom {

namespace {

// Catalogue fields are optional, so a missing one is not logged; numbers may come as text.
int32_t intOf(const QJsonObject& object, const char* key) {
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isDouble()) {
        const double number = value.toDouble();
        return number >= INT32_MIN && number <= INT32_MAX ? static_cast<int32_t>(number) : 0;
    }
    bool ok = false;
    const int32_t number = value.toString().toInt(&ok);
    return ok ? number : 0;
}

std::string textOf(const QJsonObject& object, const char* key) {
    return object.value(QLatin1String(key)).toString().toStdString();
}

// The entries of "list", each an object; at most kMaxCatalogueEntries of them.
std::vector<QJsonObject> listEntries(const QJsonObject& data) {
    QJsonArray list;
    DataParser::readArray(data, QStringLiteral("list"), list);
    if (list.size() > kMaxCatalogueEntries) {
        tolvane::log::writeLine(tolvane::log::kMainLog, QStringLiteral("list too long"));
    }
    std::vector<QJsonObject> entries;
    for (const QJsonValue& entry : qAsConst(list)) {
        if (entries.size() == static_cast<std::size_t>(kMaxCatalogueEntries)) {
            break;
        }
        if (entry.isObject()) {
            entries.push_back(entry.toObject());
        }
    }
    return entries;
}

bool readGift(const QJsonObject& object, VxGiftRecord& gift, std::vector<VxGiftSkinRecord>& skins) {
    gift.id = intOf(object, "id");
    if (gift.id <= 0) {
        return false;
    }
    gift.name = textOf(object, "name");
    gift.price = intOf(object, "price");
    gift.icon = textOf(object, "icon");
    gift.skinIds.clear();
    const QJsonArray skinList = object.value(QLatin1String("skins")).toArray();
    for (const QJsonValue& entry : skinList) {
        const QJsonObject skinObject = entry.toObject();
        VxGiftSkinRecord skin;
        skin.id = intOf(skinObject, "id");
        if (skin.id <= 0 || skins.size() >= static_cast<std::size_t>(kMaxCatalogueEntries)) {
            continue;
        }
        skin.giftId = gift.id;
        skin.name = textOf(skinObject, "name");
        skin.icon = textOf(skinObject, "icon");
        gift.skinIds.push_back(skin.id);
        skins.push_back(std::move(skin));
    }
    return true;
}

bool readProp(const QJsonObject& object, VxPropRecord& prop) {
    prop.id = intOf(object, "id");
    if (prop.id <= 0) {
        return false;
    }
    prop.name = textOf(object, "name");
    prop.price = intOf(object, "price");
    prop.icon = textOf(object, "icon");
    return true;
}

}  // namespace

int parseGiftList(DataParser&, const QByteArray& bytes, std::vector<VxGiftRecord>& gifts,
                  std::vector<VxGiftSkinRecord>& skins) {
    QJsonObject data;
    const int result = DataParser::parseConfigReply("parseGiftList", bytes, data);
    if (result != 0) {
        return result;
    }
    gifts.clear();
    skins.clear();
    for (const QJsonObject& entry : listEntries(data)) {
        VxGiftRecord gift;
        if (readGift(entry, gift, skins)) {
            gifts.push_back(std::move(gift));
        }
    }
    return 0;
}

int parseSingleGift(DataParser& parser, const QByteArray& bytes, VxGiftRecord& gift,
                    std::vector<VxGiftSkinRecord>& skins) {
    QJsonObject data;
    const int result = parser.parseDataObject("parseSingleGift", bytes, data, nullptr);
    if (result != 0) {
        return result;
    }
    skins.clear();
    return readGift(data, gift, skins) ? 0 : 1;
}

int parsePropList(DataParser&, const QByteArray& bytes, std::vector<VxPropRecord>& props) {
    QJsonObject data;
    const int result = DataParser::parseConfigReply("parsePropList", bytes, data);
    if (result != 0) {
        return result;
    }
    props.clear();
    for (const QJsonObject& entry : listEntries(data)) {
        VxPropRecord prop;
        if (readProp(entry, prop)) {
            props.push_back(std::move(prop));
        }
    }
    return 0;
}

int parseSingleProp(DataParser& parser, const QByteArray& bytes, VxPropRecord& prop) {
    QJsonObject data;
    const int result = parser.parseDataObject("parseSingleProp", bytes, data, nullptr);
    if (result != 0) {
        return result;
    }
    return readProp(data, prop) ? 0 : 1;
}

int parseResourceFile(DataParser&, const QByteArray& bytes, const char* idKey,
                      std::vector<VxResourceRecord>& records) {
    QJsonObject data;
    const int result = DataParser::parseConfigReply("parseResourceFile", bytes, data);
    if (result != 0) {
        return result;
    }
    records.clear();
    for (const QJsonObject& entry : listEntries(data)) {
        VxResourceRecord record;
        record.id = intOf(entry, idKey);
        if (record.id <= 0) {
            continue;
        }
        record.name = textOf(entry, "name");
        record.icon = textOf(entry, "icon");
        record.json = QJsonDocument(entry).toJson(QJsonDocument::Compact).toStdString();
        records.push_back(std::move(record));
    }
    return 0;
}

}  // namespace tolvane::liveroom
