#pragma once

#include <QByteArray>
#include <vector>

#include "tolvane/i_vx_live_room_info.h"

class DataParser;

// The catalogue's replies read into records. Entries without a positive id are skipped, and a
// list longer than kMaxCatalogueEntries keeps its first entries and logs "list too long".
// The single gift and prop are ordinary API replies: they return 0, 1 when "data" is unusable,
// or the envelope's code as DataParser maps it, the check running on the parser given so that
// the caller picks whose last error message it fills. The lists and the resource files are
// configuration files, callback-wrapped and without an envelope (an "error" member, if any, is
// not read): they return 0, or 1 when the file holds no "data" object, and leave the parser
// untouched.
namespace tolvane::liveroom {

constexpr int kMaxCatalogueEntries = 20000;

// VXConfigCallback({"data": {"list": [gift, ...]}}); a gift's "skins" become skin records of
// their own.
int parseGiftList(DataParser& parser, const QByteArray& bytes, std::vector<VxGiftRecord>& gifts,
                  std::vector<VxGiftSkinRecord>& skins);
// {"data": gift}
int parseSingleGift(DataParser& parser, const QByteArray& bytes, VxGiftRecord& gift,
                    std::vector<VxGiftSkinRecord>& skins);
// VXConfigCallback({"data": {"list": [prop, ...]}})
int parsePropList(DataParser& parser, const QByteArray& bytes, std::vector<VxPropRecord>& props);
// {"data": prop}
int parseSingleProp(DataParser& parser, const QByteArray& bytes, VxPropRecord& prop);
// A resource configuration file, VXConfigCallback({"data": {"list": [...]}}), whose entries
// carry their id under `idKey`.
int parseResourceFile(DataParser& parser, const QByteArray& bytes, const char* idKey,
                      std::vector<VxResourceRecord>& records);

}  // namespace tolvane::liveroom
