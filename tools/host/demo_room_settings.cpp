// The demo's look at the live room: the settings under review, followers, guild, watermark
// corners, the show's statistics and the bit-rate preset of the picked category.
#include <QStringList>
#include <algorithm>

#include "demo_road.h"
#include "watermark_corners.h"

namespace {

// The result the watermark query gives when the network never answered; any other is a mask.
constexpr int32_t kNoAnswer = 210;

QString text(const std::u16string& value) {
    return QString::fromStdU16String(value);
}

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

}  // namespace

void DemoRoad::showLiveRoomSettings(int32_t cid2) {
    showRoomParameter();
    showFollowersAndGuild();
    showWatermarkCorners();
    showLiveStatistics();
    showBitratePreset(cid2);
}

void DemoRoad::showRoomParameter() {
    LiveRoomParameter room;
    const int32_t code = service_.getLiveRoomParameter(room);
    if (!check(QStringLiteral("getLiveRoomParameter"), code, std::string(),
               QStringLiteral("room %1 \"%2\", category %3 / %4")
                   .arg(room.roomId)
                   .arg(text(room.roomName))
                   .arg(room.cate2Id)
                   .arg(room.cate3Id))) {
        return;
    }
    step(QStringLiteral("  title"), QStringLiteral("\"%1\" (review state %2)")
                                        .arg(text(room.newTitle))
                                        .arg(room.titleVerifyState));
    step(QStringLiteral("  notice"),
         QStringLiteral("\"%1\" (state %2%3)")
             .arg(text(room.newNotice))
             .arg(room.noticeState)
             .arg(room.noticeAlways ? QStringLiteral(", always shown") : QString()));
    step(QStringLiteral("  cover"),
         QStringLiteral("state %1, credit %2").arg(room.coverState).arg(room.credit));
}

void DemoRoad::showFollowersAndGuild() {
    int32_t followers = 0;
    const int32_t followCode = service_.getFollowCnt(followers);
    check(QStringLiteral("getFollowCnt"), followCode, std::string(),
          QStringLiteral("%1 followers").arg(followers));
    bool inGuild = false;
    const int32_t guildCode = service_.checkInGuild(inGuild);
    check(QStringLiteral("checkInGuild"), guildCode, std::string(),
          inGuild ? QStringLiteral("in a guild") : QStringLiteral("not in a guild"));
}

void DemoRoad::showWatermarkCorners() {
    const int32_t mask = service_.getWatermarkLocation();
    QStringList corners;
    for (int corner : watermarkCorners(mask)) {
        corners << QString::number(corner);
    }
    expect(QStringLiteral("getWatermarkLocation"), mask != kNoAnswer,
           mask == kNoAnswer ? QStringLiteral("no answer (%1)").arg(mask)
                             : QStringLiteral("mask 0x%1: corners %2")
                                   .arg(mask, 0, 16)
                                   .arg(corners.join(QStringLiteral(", "))));
}

void DemoRoad::showLiveStatistics() {
    LivingStatistics figures;
    const int32_t code = service_.getLivingStatisticalInfo(figures);
    check(QStringLiteral("getLivingStatisticalInfo"), code, std::string(),
          QStringLiteral("mh %1, nac %2, nsuc %3, nsfi %4, nfbi %5, ld %6, bans %7")
              .arg(figures.mh)
              .arg(figures.nac)
              .arg(figures.nsuc)
              .arg(figures.nsfi)
              .arg(figures.nfbi)
              .arg(figures.ld)
              .arg(figures.bancount));
    // A live show's figures only grow, and 0 is what the call gives when it cannot read them.
    const double mh = service_.getLivingStatistic();
    expect(QStringLiteral("getLivingStatistic"), mh > 0, QStringLiteral("mh %1").arg(mh));
}

void DemoRoad::showBitratePreset(int32_t cid2) {
    std::vector<BitrateConfig> presets;
    const int32_t code = service_.getIntelligentSettingConfig(presets);
    if (code != 0) {
        check(QStringLiteral("getIntelligentSettingConfig"), code);
        return;
    }
    const auto preset = std::find_if(presets.begin(), presets.end(),
                                     [cid2](const BitrateConfig& c) { return c.cate2Id == cid2; });
    expect(QStringLiteral("getIntelligentSettingConfig"), preset != presets.end(),
           preset == presets.end()
               ? QStringLiteral("no preset for category %1 among %2").arg(cid2).arg(presets.size())
               : QStringLiteral("%1 (%2): %3-%4, type flag %5")
                     .arg(text(preset->cate2Name))
                     .arg(cid2)
                     .arg(preset->min)
                     .arg(preset->max)
                     .arg(preset->typeFlag ? 1 : 0));
}
