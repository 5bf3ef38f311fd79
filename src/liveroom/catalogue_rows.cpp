#include "liveroom/catalogue_rows.h"

namespace tolvane::liveroom {

namespace {

using tolvane::net::BaseKind;
using tolvane::net::CommonPlacement;
using tolvane::net::HostKind;
using tolvane::net::HttpMethod;
using tolvane::net::OperationRow;
using tolvane::net::registerOperation;

// Short enough that a dead gift service does not hold up the barrage start for long.
constexpr int kCatalogueTimeoutMs = 5000;

const OperationRow& giftRow(const char* name, const char* path) {
    return registerOperation(baseRow(name, HttpMethod::Get, BaseKind::Gift, path)
                                 .commonIn(CommonPlacement::None)
                                 .timeout(kCatalogueTimeoutMs));
}

const OperationRow& configRow(const char* name, const char* path) {
    return registerOperation(hostRow(name, HttpMethod::Get, HostKind::WebConfig, path, nullptr)
                                 .timeout(kCatalogueTimeoutMs));
}

// The template and prop-list paths are this module's own: the platform's clients fetch their
// catalogues from pages the module does not load.
const OperationRow& kGiftTemplate = giftRow("requestGiftTemplate", "api/gift/v2/web/template");
const OperationRow& kPropList = giftRow("requestPropList", "api/prop/v1/web/list");
const OperationRow& kSingleGift = giftRow("fetchSingleGift", "api/gift/v2/web/single");
const OperationRow& kSingleProp = giftRow("fetchSingleProp", "api/prop/v1/web/single");

const OperationRow& kPropertyInfo =
    configRow("requestPropertyInfo", "/resource/common/property_info.json");
const OperationRow& kGiftConfig =
    giftRow("requestGiftCommonConfig", "api/gift/v1/web/commonConfig");
const OperationRow& kNobleEffects =
    configRow("requestNobleOpenEffect", "/resource/noble/openeffect/web.json");
const OperationRow& kFansMedals =
    configRow("requestFansMedals", "/resource/common/fans_medal_web_v3.json");
const OperationRow& kDiamondFans =
    configRow("requestDiamondFans", "/resource/common/config/inter_com_w_diamond_fans.json");

}  // namespace

const OperationRow& giftTemplateRow() {
    return kGiftTemplate;
}

const OperationRow& propListRow() {
    return kPropList;
}

const OperationRow& singleGiftRow() {
    return kSingleGift;
}

const OperationRow& singlePropRow() {
    return kSingleProp;
}

const std::vector<ResourceFile>& resourceFiles() {
    static const std::vector<ResourceFile> files = {
        {VxCatalogueTable::PropertyInfo, &kPropertyInfo, "id"},
        {VxCatalogueTable::GiftConfig, &kGiftConfig, "id"},
        {VxCatalogueTable::NobleEffects, &kNobleEffects, "noble_level"},
        {VxCatalogueTable::FansMedals, &kFansMedals, "level"},
        {VxCatalogueTable::DiamondFans, &kDiamondFans, "level"},
    };
    return files;
}

}  // namespace tolvane::liveroom
