#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <cstdint>
#include <optional>

namespace tolvane::sim {

class SimHttpServer;

// The gift service's catalogue. The room's gift template lacks a few gifts and props that the
// single-item routes still know, as when the platform adds a gift during a show: barrage
// messages that name them make the module fetch them one by one.
namespace gift_catalogue {

// Gifts the template lists, and one it lacks; the same for props.
constexpr int32_t kFirstTemplateGift = 100;
constexpr int32_t kLastTemplateGift = 105;
constexpr int32_t kLateGift = 106;
constexpr int32_t kFirstListedProp = 300;
constexpr int32_t kLateProp = 305;

QJsonArray templateGifts();
QJsonArray listedProps();
// Any gift or prop the service knows, listed or not.
std::optional<QJsonObject> gift(int32_t id);
std::optional<QJsonObject> prop(int32_t id);

}  // namespace gift_catalogue

// The gift template, the prop list, the single-item routes and the five resource
// configuration files (four on the configuration service, one on the gift service).
void addGiftRoutes(SimHttpServer& server);

}  // namespace tolvane::sim
