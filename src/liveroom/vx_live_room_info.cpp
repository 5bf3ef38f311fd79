#include "liveroom/vx_live_room_info.h"

#include <algorithm>
#include <limits>

#include "liveroom/catalogue_parsers.h"
#include "liveroom/catalogue_rows.h"
#include "liveroom/serving_wait.h"
#include "log/log_writer.h"
#include "net/operation_request.h"
#include "net/vx_net_request.h"
#include "parse/data_parser.h"
#include "vxencoder/vx_decoder.h"

using tolvane::liveroom::FetchKey;
using tolvane::liveroom::FetchQueue;

namespace {

constexpr int32_t kNoRoom = -1;

// The barrage messages that name catalogue items, and the items that name them.
const char* const kGiftMessage = "gift";
const char* const kPropMessage = "prop";

void logLine(const QString& text) {
    tolvane::log::writeLine(tolvane::log::kMainLog, text);
}

// Observer callbacks this thread is inside of, in any store.
thread_local int callbacksRunningHere = 0;

}  // namespace

VxLiveRoomInfo::VxLiveRoomInfo(VxNetRequest* request, DataParser* parser)
    : request_(request),
      parser_(parser),
      environment_(request != nullptr ? request->environment() : 0),
      endpoints_(VxEndpoints::fromDefaultData()),
      fetchClient_(std::make_unique<VxNetRequest>(environment_, nullptr)) {
    takeRequestSettings();
    queue_ = std::make_unique<FetchQueue>(
        [this](const FetchKey& key, uint64_t generation) { return fetch(key, generation); });
}

VxLiveRoomInfo::~VxLiveRoomInfo() {
    shutdown();
}

void VxLiveRoomInfo::shutdown() {
    fetchClient_->abortTransfers();
    queue_->stop();
}

// --- Reads, from any thread ---

bool VxLiveRoomInfo::findGift(int32_t id, VxGiftRecord& gift) const {
    return gifts_.find(id, gift);
}

bool VxLiveRoomInfo::findGiftSkin(int32_t id, VxGiftSkinRecord& skin) const {
    return skins_.find(id, skin);
}

bool VxLiveRoomInfo::findProp(int32_t id, VxPropRecord& prop) const {
    return props_.find(id, prop);
}

bool VxLiveRoomInfo::findResource(VxCatalogueTable table, int32_t id,
                                  VxResourceRecord& record) const {
    const auto* resources = resourceTable(table);
    return resources != nullptr && resources->find(id, record);
}

std::vector<VxGiftRecord> VxLiveRoomInfo::gifts() const {
    return gifts_.all();
}

std::vector<VxGiftSkinRecord> VxLiveRoomInfo::giftSkins() const {
    return skins_.all();
}

std::vector<VxPropRecord> VxLiveRoomInfo::props() const {
    return props_.all();
}

std::vector<VxResourceRecord> VxLiveRoomInfo::resources(VxCatalogueTable table) const {
    const auto* resources = resourceTable(table);
    return resources != nullptr ? resources->all() : std::vector<VxResourceRecord>();
}

std::string VxLiveRoomInfo::clientVersion() const {
    std::lock_guard<std::mutex> lock(versionMutex_);
    return clientVersion_;
}

const tolvane::liveroom::CatalogueTable<VxResourceRecord>* VxLiveRoomInfo::resourceTable(
    VxCatalogueTable table) const {
    const int index = static_cast<int>(table) - static_cast<int>(VxCatalogueTable::PropertyInfo);
    if (index < 0 || index >= static_cast<int>(resources_.size())) {
        return nullptr;
    }
    return &resources_[static_cast<std::size_t>(index)];
}

tolvane::liveroom::CatalogueTable<VxResourceRecord>* VxLiveRoomInfo::resourceTable(
    VxCatalogueTable table) {
    return const_cast<tolvane::liveroom::CatalogueTable<VxResourceRecord>*>(
        static_cast<const VxLiveRoomInfo*>(this)->resourceTable(table));
}

int32_t VxLiveRoomInfo::resolveSendValue(int32_t id, int32_t kind, int32_t count) {
    int64_t price = 0;
    if (kind == kVxSendGift) {
        VxGiftRecord gift;
        if (!gifts_.find(id, gift)) {
            requestGift(id, 0);
            return 0;
        }
        price = gift.price;
    } else if (kind == kVxSendProp) {
        VxPropRecord prop;
        if (!props_.find(id, prop)) {
            requestProp(id);
            return 0;
        }
        price = prop.price;
    } else {
        return 0;
    }
    if (count <= 0 || price <= 0) {
        return 0;
    }
    return static_cast<int32_t>(
        std::min<int64_t>(price * count, std::numeric_limits<int32_t>::max()));
}

// --- Observers ---

void VxLiveRoomInfo::addObserver(IVxDataSubject* observer) {
    if (observer == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> lock(observersMutex_);
    const bool known = std::any_of(observers_.begin(), observers_.end(),
                                   [&](const auto& slot) { return slot->observer == observer; });
    if (!known) {
        auto slot = std::make_shared<ObserverSlot>();
        slot->observer = observer;
        observers_.push_back(std::move(slot));
    }
}

// Once this returns no new callback starts for the observer, and none is running on another
// thread. Called from inside a callback it does not wait: the caller's own callback is running,
// and two callbacks removing each other's observers would wait for each other for ever.
void VxLiveRoomInfo::removeObserver(IVxDataSubject* observer) {
    std::unique_lock<std::mutex> lock(observersMutex_);
    const auto found = std::find_if(observers_.begin(), observers_.end(),
                                    [&](const auto& slot) { return slot->observer == observer; });
    if (found == observers_.end()) {
        return;
    }
    const std::shared_ptr<ObserverSlot> slot = *found;
    slot->removed = true;
    observers_.erase(found);
    if (callbacksRunningHere == 0) {
        tolvane::liveroom::waitServingEvents(lock, observerReturned_,
                                             [&] { return slot->calls == 0; });
    }
}

// The lock is taken only to pick the next observer and to count the call, never around it.
template <typename Call>
void VxLiveRoomInfo::notify(const Call& call) {
    std::vector<std::shared_ptr<ObserverSlot>> registered;
    {
        std::lock_guard<std::mutex> lock(observersMutex_);
        registered = observers_;
    }
    for (const std::shared_ptr<ObserverSlot>& slot : registered) {
        {
            std::lock_guard<std::mutex> lock(observersMutex_);
            if (slot->removed) {
                continue;
            }
            ++slot->calls;
        }
        ++callbacksRunningHere;
        call(*slot->observer);
        --callbacksRunningHere;
        {
            std::lock_guard<std::mutex> lock(observersMutex_);
            --slot->calls;
        }
        observerReturned_.notify_all();
    }
}

void VxLiveRoomInfo::notifyTable(VxCatalogueTable table) {
    notify([table](IVxDataSubject& observer) { observer.onTableChanged(table); });
}

void VxLiveRoomInfo::notifyRoom(int32_t roomId) {
    notify([roomId](IVxDataSubject& observer) { observer.onRoomChanged(roomId); });
}

// --- The service's side ---

void VxLiveRoomInfo::refreshFromRoomInfo() {
    const RoomInfo& room = parser_->roomInfo();
    anchorLevel_.store(room.anchorLevel);
    vipId_.store(room.vipId);
    if (roomId_.exchange(room.roomId) != room.roomId) {
        notifyRoom(room.roomId);
    }
}

void VxLiveRoomInfo::setCurrentUserId(int32_t userId) {
    currentUserId_.store(userId);
}

void VxLiveRoomInfo::setClientVersion(const std::string& version) {
    {
        std::lock_guard<std::mutex> lock(versionMutex_);
        clientVersion_ = version;
    }
    takeRequestSettings();
}

void VxLiveRoomInfo::takeRequestSettings() {
    if (request_ == nullptr) {
        return;
    }
    std::lock_guard<std::mutex> lock(settingsMutex_);
    deviceHeader_ = request_->deviceHeader();
    proxy_ = request_->proxy();
}

void VxLiveRoomInfo::storeGifts(const std::vector<VxGiftRecord>& gifts,
                                const std::vector<VxGiftSkinRecord>& skins) {
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        gifts_.replace(gifts);
        skins_.replace(skins);
    }
    notifyTable(VxCatalogueTable::Gifts);
    notifyTable(VxCatalogueTable::GiftSkins);
}

void VxLiveRoomInfo::storeProps(const std::vector<VxPropRecord>& props) {
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        props_.replace(props);
    }
    notifyTable(VxCatalogueTable::Props);
}

void VxLiveRoomInfo::loadResourceFiles() {
    for (const tolvane::liveroom::ResourceFile& file : tolvane::liveroom::resourceFiles()) {
        queue_->request({FetchKey::Resource, static_cast<int32_t>(file.table), 0});
    }
}

void VxLiveRoomInfo::clear() {
    std::vector<VxCatalogueTable> cleared;
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        queue_->clear();
        if (gifts_.clear()) {
            cleared.push_back(VxCatalogueTable::Gifts);
        }
        if (skins_.clear()) {
            cleared.push_back(VxCatalogueTable::GiftSkins);
        }
        if (props_.clear()) {
            cleared.push_back(VxCatalogueTable::Props);
        }
        for (std::size_t i = 0; i < resources_.size(); ++i) {
            if (resources_[i].clear()) {
                cleared.push_back(static_cast<VxCatalogueTable>(
                    static_cast<int32_t>(VxCatalogueTable::PropertyInfo) + static_cast<int>(i)));
            }
        }
    }
    anchorLevel_.store(0);
    vipId_.store(0);
    currentUserId_.store(0);
    for (VxCatalogueTable table : cleared) {
        notifyTable(table);
    }
    if (roomId_.exchange(kNoRoom) != kNoRoom) {
        notifyRoom(kNoRoom);
    }
}

// --- Unknown items ---

void VxLiveRoomInfo::noteBarrageMessage(const BarrageMessage& message) {
    const bool gift = message.typeName == kGiftMessage;
    if (!gift && message.typeName != kPropMessage) {
        return;
    }
    vxDecoder items;
    if (!items.Parse(message.rawText)) {
        return;
    }
    int32_t id = 0;
    if (gift) {
        int32_t skinId = 0;
        items.GetInt32("skin", skinId);
        if (items.GetInt32("gid", id) && id > 0 &&
            (!gifts_.contains(id) || (skinId > 0 && !skins_.contains(skinId)))) {
            requestGift(id, std::max(skinId, 0));
        }
    } else if (items.GetInt32("pid", id) && id > 0 && !props_.contains(id)) {
        requestProp(id);
    }
}

void VxLiveRoomInfo::requestGift(int32_t giftId, int32_t skinId) {
    if (giftId > 0) {
        queue_->request({FetchKey::Gift, giftId, skinId});
    }
}

void VxLiveRoomInfo::requestProp(int32_t propId) {
    if (propId > 0) {
        queue_->request({FetchKey::Prop, propId, 0});
    }
}

void VxLiveRoomInfo::setFetchPolicy(const FetchQueue::Policy& policy) {
    queue_->setPolicy(policy);
}

bool VxLiveRoomInfo::fetching() const {
    return queue_->busy();
}

// --- The fetch thread ---

bool VxLiveRoomInfo::fetch(const FetchKey& key, uint64_t generation) {
    switch (key.kind) {
        case FetchKey::Tables:
            return fetchTables(key.id, generation);
        case FetchKey::Gift:
            // Asked for while the tables were still on their way, and known by now.
            return (gifts_.contains(key.id) && (key.extra == 0 || skins_.contains(key.extra))) ||
                   fetchGift(key.id, key.extra, generation);
        case FetchKey::Prop:
            return props_.contains(key.id) || fetchProp(key.id, generation);
        default:
            return fetchResource(key.id, generation);
    }
}

bool VxLiveRoomInfo::send(const tolvane::net::OperationRow& row, const ParamList& items,
                          QByteArray& body) {
    tolvane::log::writeBanner(QStringLiteral("VxLiveRoomInfo::") + QLatin1String(row.name));
    const tolvane::net::PreparedRequest request = tolvane::net::prepareOperation(
        row, items, tolvane::net::CommonValues(), endpoints_, environment_);
    {
        std::lock_guard<std::mutex> lock(settingsMutex_);
        fetchClient_->setDeviceHeader(deviceHeader_);
        fetchClient_->setProxy(proxy_);
    }
    return fetchClient_->sendPrepared(body, request, row.timeoutMs);
}

namespace {

void logRefusedReply(const tolvane::net::OperationRow& row, const QByteArray& body) {
    logLine(QStringLiteral("error Url: %1").arg(QLatin1String(row.path)));
    logLine(QStringLiteral("result data : %1").arg(QString::fromUtf8(body)));
}

}  // namespace

bool VxLiveRoomInfo::fetchGift(int32_t giftId, int32_t skinId, uint64_t generation) {
    const tolvane::net::OperationRow& row = tolvane::liveroom::singleGiftRow();
    QByteArray body;
    if (!send(row,
              {{QStringLiteral("gid"), QString::number(giftId)},
               {QStringLiteral("skinId"), QString::number(skinId)}},
              body)) {
        return false;
    }
    DataParser parser;
    VxGiftRecord gift;
    std::vector<VxGiftSkinRecord> skins;
    if (tolvane::liveroom::parseSingleGift(parser, body, gift, skins) != 0 || gift.id != giftId) {
        logRefusedReply(row, body);
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        if (!queue_->current(generation)) {
            return true;  // the user logged out meanwhile; the answer is for nobody
        }
        gifts_.insert(gift);
        for (const VxGiftSkinRecord& skin : skins) {
            skins_.insert(skin);
        }
    }
    notifyTable(VxCatalogueTable::Gifts);
    if (!skins.empty()) {
        notifyTable(VxCatalogueTable::GiftSkins);
    }
    return true;
}

bool VxLiveRoomInfo::fetchProp(int32_t propId, uint64_t generation) {
    const tolvane::net::OperationRow& row = tolvane::liveroom::singlePropRow();
    QByteArray body;
    if (!send(row, {{QStringLiteral("pid"), QString::number(propId)}}, body)) {
        return false;
    }
    DataParser parser;
    VxPropRecord prop;
    if (tolvane::liveroom::parseSingleProp(parser, body, prop) != 0 || prop.id != propId) {
        logRefusedReply(row, body);
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        if (!queue_->current(generation)) {
            return true;
        }
        props_.insert(prop);
    }
    notifyTable(VxCatalogueTable::Props);
    return true;
}

bool VxLiveRoomInfo::fetchResource(int32_t table, uint64_t generation) {
    const auto& files = tolvane::liveroom::resourceFiles();
    const auto file = std::find_if(files.begin(), files.end(), [&](const auto& candidate) {
        return static_cast<int32_t>(candidate.table) == table;
    });
    if (file == files.end()) {
        return true;
    }
    QByteArray body;
    if (!send(*file->row, ParamList(), body)) {
        return false;
    }
    DataParser parser;
    std::vector<VxResourceRecord> records;
    if (tolvane::liveroom::parseResourceFile(parser, body, file->idKey, records) != 0) {
        logRefusedReply(*file->row, body);
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        if (!queue_->current(generation)) {
            return true;
        }
        resourceTable(file->table)->replace(records);
    }
    notifyTable(file->table);
    return true;
}

// The barrage start-up hands the room's gift template and prop list to this thread, since going
// live needs no catalogue and must not wait for one. As slot 49 does, a table whose request fails
// keeps what it held, so the requests on the wire stay the same.
void VxLiveRoomInfo::loadTablesInBackground(int32_t roomId) {
    queue_->request({FetchKey::Tables, roomId, 0});
    loadResourceFiles();
}

bool VxLiveRoomInfo::fetchTables(int32_t roomId, uint64_t generation) {
    const ParamList items{{QStringLiteral("rid"), QString::number(roomId)}};
    DataParser parser;
    const tolvane::net::OperationRow& giftRow = tolvane::liveroom::giftTemplateRow();
    QByteArray giftBody;
    std::vector<VxGiftRecord> gifts;
    std::vector<VxGiftSkinRecord> skins;
    const bool giftsRead = send(giftRow, items, giftBody) &&
                           tolvane::liveroom::parseGiftList(parser, giftBody, gifts, skins) == 0;
    if (!giftsRead) {
        logRefusedReply(giftRow, giftBody);
    }
    const tolvane::net::OperationRow& propRow = tolvane::liveroom::propListRow();
    QByteArray propBody;
    std::vector<VxPropRecord> props;
    const bool propsRead = send(propRow, items, propBody) &&
                           tolvane::liveroom::parsePropList(parser, propBody, props) == 0;
    if (!propsRead) {
        logRefusedReply(propRow, propBody);
    }
    {
        std::lock_guard<std::mutex> lock(fillMutex_);
        if (!queue_->current(generation)) {
            return true;  // the user logged out meanwhile; the tables are for nobody
        }
        if (giftsRead) {
            gifts_.replace(gifts);
            skins_.replace(skins);
        }
        if (propsRead) {
            props_.replace(props);
        }
    }
    if (giftsRead) {
        notifyTable(VxCatalogueTable::Gifts);
        notifyTable(VxCatalogueTable::GiftSkins);
    }
    if (propsRead) {
        notifyTable(VxCatalogueTable::Props);
    }
    return true;
}
