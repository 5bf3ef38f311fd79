#pragma once

#include "tolvane/i_vx_live_room_info.h"

// The resource files of the catalogue, with the names the demo prints and the keys a call's
// JSON answer uses.
struct CatalogueResource {
    VxCatalogueTable table;
    const char* name;
    const char* key;
};

inline constexpr CatalogueResource kCatalogueResources[] = {
    {VxCatalogueTable::PropertyInfo, "property info", "propertyInfo"},
    {VxCatalogueTable::GiftConfig, "gift config", "giftConfig"},
    {VxCatalogueTable::NobleEffects, "noble effects", "nobleEffects"},
    {VxCatalogueTable::FansMedals, "fans medals", "fansMedals"},
    {VxCatalogueTable::DiamondFans, "diamond fans", "diamondFans"},
};

// They arrive on the module's own thread after the catalogue loads; true once all are there.
inline bool catalogueResourcesLoaded(const IVxLiveRoomInfo& catalogue) {
    for (const CatalogueResource& resource : kCatalogueResources) {
        if (catalogue.resources(resource.table).empty()) {
            return false;
        }
    }
    return true;
}

// How long a listing waits for them.
constexpr int kCatalogueResourceWaitMs = 3000;
