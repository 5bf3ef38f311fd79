#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The gift and resource catalogue of the live room, as the host reads it through
// ILiveencoderNetService::getLiveRoomInfo(). Every table is keyed by a 32-bit id and may be
// read from any thread while the module fills it on its own threads; lookups hand out copies.

// The tables, as observers hear of them.
enum class VxCatalogueTable : int32_t {
    Gifts = 0,
    GiftSkins = 1,
    Props = 2,
    PropertyInfo = 3,  // descriptions of the viewers' properties
    GiftConfig = 4,    // the gift service's common settings (batch sizes and the like)
    NobleEffects = 5,  // entrance effects by noble level
    FansMedals = 6,    // fans medals by level
    DiamondFans = 7,   // diamond fans ranks by level
};

// The number of tables above; the resource tables are the ones from PropertyInfo on.
constexpr int32_t kVxCatalogueTableCount = 8;

// The kinds of item slot 26 (barrageLoginCall) sends; its second argument.
constexpr int32_t kVxSendGift = 1;
constexpr int32_t kVxSendProp = 2;

struct VxGiftRecord {
    int32_t id = 0;
    std::string name;   // UTF-8
    int32_t price = 0;  // in the platform's smallest currency unit
    std::string icon;   // image URL
    std::vector<int32_t> skinIds;
};

struct VxGiftSkinRecord {
    int32_t id = 0;
    int32_t giftId = 0;
    std::string name;
    std::string icon;
};

struct VxPropRecord {
    int32_t id = 0;
    std::string name;
    int32_t price = 0;
    std::string icon;
};

// One entry of a resource configuration file. The file's other fields stay readable in `json`,
// the entry as the platform wrote it (a compact JSON object).
struct VxResourceRecord {
    int32_t id = 0;
    std::string name;
    std::string icon;
    std::string json;
};

// Implemented by the host and registered with IVxLiveRoomInfo::addObserver. Called on the
// thread that changed the catalogue (the service's thread or the catalogue's fetch thread),
// after the change, with no lock of the catalogue held: an implementation may read the
// catalogue, and may block until another thread (the host's GUI thread) answers, but must not
// add or remove observers while it holds a lock that its own callbacks also take.
class IVxDataSubject {
public:
    // A table was loaded, cleared, or gained an entry fetched on its own.
    virtual void onTableChanged(VxCatalogueTable table) = 0;
    // The room the catalogue describes changed; -1 when none is known any more (logout).
    virtual void onRoomChanged(int32_t roomId) = 0;

protected:
    ~IVxDataSubject() = default;  // the module never deletes the host's observer
};

// The catalogue. The pointer stays valid for the life of the service; logging out empties it.
// The order of declaration is the binary contract: never insert, remove or reorder.
class IVxLiveRoomInfo {
public:
    // False, with the output untouched, for an id the table does not hold (yet).
    virtual bool findGift(int32_t id, VxGiftRecord& gift) const = 0;
    virtual bool findGiftSkin(int32_t id, VxGiftSkinRecord& skin) const = 0;
    virtual bool findProp(int32_t id, VxPropRecord& prop) const = 0;
    virtual bool findResource(VxCatalogueTable table, int32_t id,
                              VxResourceRecord& record) const = 0;
    // Whole tables, ordered by id.
    virtual std::vector<VxGiftRecord> gifts() const = 0;
    virtual std::vector<VxGiftSkinRecord> giftSkins() const = 0;
    virtual std::vector<VxPropRecord> props() const = 0;
    virtual std::vector<VxResourceRecord> resources(VxCatalogueTable table) const = 0;

    // The room and the anchor as the last room information described them (-1, 0, 0 when
    // no room is known).
    virtual int32_t roomId() const = 0;
    virtual int32_t anchorLevel() const = 0;
    virtual int32_t vipId() const = 0;
    // The logged-in user's id (0 when nobody is logged in) and the host's version text.
    virtual int32_t currentUserId() const = 0;
    virtual std::string clientVersion() const = 0;

    // Observers are not owned; remove one before it goes. Adding one twice adds it once.
    virtual void addObserver(IVxDataSubject* observer) = 0;
    // Once it returns, no callback to the observer starts, and none runs on another thread: it
    // waits for a running one, serving the calling thread's queued Qt calls meanwhile. Called
    // from inside a callback, it does not wait.
    virtual void removeObserver(IVxDataSubject* observer) = 0;

    // The value slot 26 sends for `count` of item `id` of `kind` (kVxSendGift or kVxSendProp):
    // the unit price times the count, or 0 for an item the catalogue does not know yet, which
    // it then fetches on its own.
    virtual int32_t resolveSendValue(int32_t id, int32_t kind, int32_t count) = 0;

protected:
    ~IVxLiveRoomInfo() = default;  // owned by the service
};
