#pragma once

#include <QByteArray>
#include <vector>

#include "tolvane/i_vx_live_room_info.h"

class DataParser;

// The catalogue's replies read into records. Each returns 0, 1 when "data" is unusable, or the
// envelope's code as DataParser maps it; the envelope check runs on the parser given, so the
// caller picks whose last error message it fills. Entries without a positive id are skipped,
// and a list longer than kMaxCatalogueEntries keeps its first entries and logs "list too long".
namespace tolvane::liveroom {

constexpr int kMaxCatalogueEntries = 20000;

// {"data": {"list": [gift, ...]}}; a gift's "skins" become skin records of their own.
int parseGiftList(DataParser& parser, const QByteArray& bytes, std::vector<VxGiftRecord>& gifts,
                  std::vector<VxGiftSkinRecord>& skins);
// {"data": gift}
int parseSingleGift(DataParser& parser, const QByteArray& bytes, VxGiftRecord& gift,
                    std::vector<VxGiftSkinRecord>& skins);
// {"data": {"list": [prop, ...]}}
int parsePropList(DataParser& parser, const QByteArray& bytes, std::vector<VxPropRecord>& props);
// {"data": prop}
int parseSingleProp(DataParser& parser, const QByteArray& bytes, VxPropRecord& prop);
// A resource configuration file: callback-wrapped {"error": 0, "data": {"list": [...]}} whose
// entries carry their id under `idKey`.
int parseResourceFile(DataParser& parser, const QByteArray& bytes, const char* idKey,
                      std::vector<VxResourceRecord>& records);

}  // namespace tolvane::liveroom
