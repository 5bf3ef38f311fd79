// `tolvane-host call` entries for the room's settings, presets, reminder and live statistics.
#include <QJsonArray>

#include "call_arguments.h"
#include "watermark_corners.h"

namespace host_calls {

namespace {

QJsonObject statisticsObject(const LivingStatistics& statistics) {
    // "mh" is 64-bit; a JSON number stays exact far beyond any figure a show reaches.
    return {{"mh", static_cast<double>(statistics.mh)},
            {"nac", statistics.nac},
            {"nsuc", statistics.nsuc},
            {"nsfi", statistics.nsfi},
            {"nfbi", statistics.nfbi},
            {"ld", statistics.ld},
            {"bancount", statistics.bancount}};
}

QJsonObject roomParameterObject(const LiveRoomParameter& p) {
    return {{"roomId", p.roomId},
            {"roomName", text(p.roomName)},
            {"newTitle", text(p.newTitle)},
            {"titleVerifyState", p.titleVerifyState},
            {"cate1Id", p.cate1Id},
            {"cate2Id", p.cate2Id},
            {"cate3Id", p.cate3Id},
            {"cate2Name", text(p.cate2Name)},
            {"cate3Name", text(p.cate3Name)},
            {"categoryTime", p.categoryTime},
            {"lastNotice", text(p.lastNotice)},
            {"newNotice", text(p.newNotice)},
            {"noticeState", p.noticeState},
            {"noticeAlways", p.noticeAlways},
            {"coverSource", text(p.coverSource)},
            {"coverState", p.coverState},
            {"coverMessage", text(p.coverMessage)},
            {"coverButtonType", p.coverButtonType},
            {"openCloseCover", p.openCloseCover},
            {"credit", p.credit}};
}

QJsonArray bitrateArray(const std::vector<BitrateConfig>& configs) {
    QJsonArray array;
    for (const BitrateConfig& config : configs) {
        array.append(QJsonObject{{"typeFlag", config.typeFlag},
                                 {"cate2Id", config.cate2Id},
                                 {"cate2Name", text(config.cate2Name)},
                                 {"min", config.min},
                                 {"max", config.max}});
    }
    return array;
}

}  // namespace

void addRoomSettingsCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("getWatermarkLocation", "", [](S& s, A) {
        const int32_t mask = s.getWatermarkLocation();
        if (mask == kNoAnswer) {
            return resultOnly(mask);
        }
        QJsonArray corners;
        for (int corner : watermarkCorners(mask)) {
            corners.append(corner);
        }
        return withOutputs(mask, {{"mask", mask}, {"corners", corners}});
    });
    add("getLiveRoomParameter", "", [](S& s, A) {
        LiveRoomParameter parameter;
        const int32_t r = s.getLiveRoomParameter(parameter);
        return withOutputs(r, roomParameterObject(parameter));
    });
    add("getIntelligentSettingConfig", "", [](S& s, A) {
        std::vector<BitrateConfig> configs;
        const int32_t r = s.getIntelligentSettingConfig(configs);
        return withOutputs(r, {{"configs", bitrateArray(configs)}});
    });
    add("createLiveRoom", "TAG_ID ID",
        [](S& s, A a) { return resultOnly(s.createLiveRoom(intArg(a, 0), intArg(a, 1))); });
    add("sendLiveRemindCustom", "TITLE", [](S& s, A a) {
        std::string message;
        const int32_t r = s.sendLiveRemindCustom(arg(a, 0), message);
        return withOutputs(r, {{"message", text(message)}});
    });
    add("getLivingStatisticalInfo", "", [](S& s, A) {
        LivingStatistics statistics;
        const int32_t r = s.getLivingStatisticalInfo(statistics);
        return withOutputs(r, statisticsObject(statistics));
    });
    // The answer is the statistics' "mh" figure itself, 0 when they could not be read.
    add("getLivingStatistic", "", [](S& s, A) { return resultOnly(s.getLivingStatistic()); });
}

}  // namespace host_calls
