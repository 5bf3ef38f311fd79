#pragma once

#include <vector>

#include "net/operation_row.h"
#include "tolvane/i_vx_live_room_info.h"

// The catalogue's requests as rows of the operation table. None is signed: the gift service
// and the configuration service serve their catalogues to browsers as they are.
namespace tolvane::liveroom {

const tolvane::net::OperationRow& giftTemplateRow();  // "rid"
const tolvane::net::OperationRow& propListRow();      // "rid"
const tolvane::net::OperationRow& singleGiftRow();    // "gid", "skinId"
const tolvane::net::OperationRow& singlePropRow();    // "pid"

// One resource configuration file: its table, its request and the key its entries' ids sit under.
struct ResourceFile {
    VxCatalogueTable table;
    const tolvane::net::OperationRow* row;
    const char* idKey;
};
const std::vector<ResourceFile>& resourceFiles();

}  // namespace tolvane::liveroom
