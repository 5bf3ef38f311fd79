#pragma once

#include <QByteArray>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "liveroom/catalogue_table.h"
#include "liveroom/fetch_queue.h"
#include "net/endpoints.h"
#include "net/operation_row.h"
#include "net/param_list.h"
#include "tolvane/barrage_message.h"
#include "tolvane/i_vx_live_room_info.h"

class DataParser;
class VxNetRequest;

// The live room information store: the gift, skin and prop tables, the records of the
// resource configuration files, and the room and user they belong to. The service fills the
// gift and prop tables on its own thread (slot 49); everything else the store fetches on its
// fetch thread, so neither the host's thread nor the barrage thread ever waits for it. Each
// table has its own lock; observers hear of every change after it is made, with no lock held,
// so an observer may block on another thread (the host's GUI thread) without holding us up.
class VxLiveRoomInfo final : public IVxLiveRoomInfo {
public:
    // The service's request client and parser; both outlive the store. The store sends its own
    // fetches through a client of its own, made with the same environment.
    VxLiveRoomInfo(VxNetRequest* request, DataParser* parser);
    ~VxLiveRoomInfo();
    VxLiveRoomInfo(const VxLiveRoomInfo&) = delete;
    VxLiveRoomInfo& operator=(const VxLiveRoomInfo&) = delete;

    // IVxLiveRoomInfo
    bool findGift(int32_t id, VxGiftRecord& gift) const override;
    bool findGiftSkin(int32_t id, VxGiftSkinRecord& skin) const override;
    bool findProp(int32_t id, VxPropRecord& prop) const override;
    bool findResource(VxCatalogueTable table, int32_t id, VxResourceRecord& record) const override;
    std::vector<VxGiftRecord> gifts() const override;
    std::vector<VxGiftSkinRecord> giftSkins() const override;
    std::vector<VxPropRecord> props() const override;
    std::vector<VxResourceRecord> resources(VxCatalogueTable table) const override;
    int32_t roomId() const override { return roomId_.load(); }
    int32_t anchorLevel() const override { return anchorLevel_.load(); }
    int32_t vipId() const override { return vipId_.load(); }
    int32_t currentUserId() const override { return currentUserId_.load(); }
    std::string clientVersion() const override;
    void addObserver(IVxDataSubject* observer) override;
    void removeObserver(IVxDataSubject* observer) override;
    int32_t resolveSendValue(int32_t id, int32_t kind, int32_t count) override;

    // The service's side, on its thread.
    // Copies room id, vip id and anchor level from the parser's room information.
    void refreshFromRoomInfo();
    void setCurrentUserId(int32_t userId);
    void setClientVersion(const std::string& version);
    // Takes the request client's "User-Device" value and proxy for the store's own fetches.
    void takeRequestSettings();
    void storeGifts(const std::vector<VxGiftRecord>& gifts,
                    const std::vector<VxGiftSkinRecord>& skins);
    void storeProps(const std::vector<VxPropRecord>& props);
    // Queues the five resource configuration files on the fetch thread.
    void loadResourceFiles();
    // Queues the room's gift template and prop list on the fetch thread, before the files:
    // the same requests as slot 49's, for a caller that must not wait for them.
    void loadTablesInBackground(int32_t roomId);
    // Logout: every table, the room and the user are forgotten; the object stays.
    void clear();
    // Ends the fetch thread at once: a transfer in flight is aborted, and a callback running on
    // that thread is waited for while this thread serves its queued Qt calls. Nothing is
    // fetched afterwards. The destructor does it too.
    void shutdown();

    // Called on the barrage thread for every message: a gift or prop the tables lack is
    // queued for a single fetch, and the call returns at once.
    void noteBarrageMessage(const BarrageMessage& message);

    // Tests shorten the retry delays; true while a fetch waits, runs or waits for a retry.
    void setFetchPolicy(const tolvane::liveroom::FetchQueue::Policy& policy);
    bool fetching() const;

private:
    using FetchKey = tolvane::liveroom::FetchKey;

    // One registered observer; shared with the notifications that are calling it.
    struct ObserverSlot {
        IVxDataSubject* observer = nullptr;
        bool removed = false;
        int calls = 0;  // callbacks running now, on any thread
    };

    // Fetch thread. `generation` is the queue's when the key was handed out.
    bool fetch(const FetchKey& key, uint64_t generation);
    bool fetchGift(int32_t giftId, int32_t skinId, uint64_t generation);
    bool fetchProp(int32_t propId, uint64_t generation);
    bool fetchResource(int32_t table, uint64_t generation);
    bool fetchTables(int32_t roomId, uint64_t generation);
    bool send(const tolvane::net::OperationRow& row, const ParamList& items, QByteArray& body);

    void requestGift(int32_t giftId, int32_t skinId);
    void requestProp(int32_t propId);
    void notifyTable(VxCatalogueTable table);
    void notifyRoom(int32_t roomId);
    template <typename Call>
    void notify(const Call& call);
    tolvane::liveroom::CatalogueTable<VxResourceRecord>* resourceTable(VxCatalogueTable table);
    const tolvane::liveroom::CatalogueTable<VxResourceRecord>* resourceTable(
        VxCatalogueTable table) const;

    VxNetRequest* request_ = nullptr;
    DataParser* parser_ = nullptr;
    std::atomic<int32_t> roomId_{-1};
    std::atomic<int32_t> anchorLevel_{0};
    std::atomic<int32_t> vipId_{0};
    std::atomic<int32_t> currentUserId_{0};
    mutable std::mutex versionMutex_;
    std::string clientVersion_;

    tolvane::liveroom::CatalogueTable<VxGiftRecord> gifts_;
    tolvane::liveroom::CatalogueTable<VxGiftSkinRecord> skins_;
    tolvane::liveroom::CatalogueTable<VxPropRecord> props_;
    std::array<tolvane::liveroom::CatalogueTable<VxResourceRecord>,
               kVxCatalogueTableCount - static_cast<int32_t>(VxCatalogueTable::PropertyInfo)>
        resources_;
    // Held while clearing and while a fetch stores its result, so that a fetch which was
    // handed out before the user logged out never refills the emptied tables.
    std::mutex fillMutex_;

    // Never held while an observer runs.
    std::mutex observersMutex_;
    std::condition_variable observerReturned_;
    std::vector<std::shared_ptr<ObserverSlot>> observers_;

    // The fetch thread's own transport; the settings are copied in before each fetch.
    int environment_ = 0;
    VxEndpoints endpoints_;
    std::mutex settingsMutex_;
    QByteArray deviceHeader_;
    std::string proxy_;
    std::unique_ptr<VxNetRequest> fetchClient_;
    // Last: its thread stops before anything it uses goes.
    std::unique_ptr<tolvane::liveroom::FetchQueue> queue_;
};
