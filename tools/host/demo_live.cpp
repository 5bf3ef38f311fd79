// The second half of the demo: category and tags, push lines, and the show from start to end.
#include <QStringList>

#include "demo_road.h"
#include "printing_observer.h"

namespace {

// Chess / Rapid: a category whose tags include one with an icon, and not the room's starting
// pick (Chess / Blitz), so the change shows in the room information.
constexpr int32_t kDemoCid2 = 12;
constexpr int32_t kDemoCid3 = 122;

// The platform answers "not a voice category" with this code and its reason.
constexpr int32_t kNotVoiceAnswer = 1;

// The barrage servers announce the end of the show shortly after the close; wait this long.
constexpr int kShowEndWaitMs = 3000;

QString text(const std::u16string& value) {
    return QString::fromStdU16String(value);
}

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

QString lineText(const PushAddress& line) {
    return QStringLiteral("%1 %2").arg(line.id).arg(text(line.url));
}

}  // namespace

void DemoRoad::goLive() {
    showCategoryTree();
    if (!pickCategory() || !pickTag()) {
        return;
    }
    showVoiceCheck();
    setLiveParameters();
    PushAddress pushLine;
    if (!listPushLines(pushLine)) {
        return;
    }
    const int32_t opened = service_.open_live_room(pushLine.url);
    if (!check(QStringLiteral("open_live_room"), opened, std::string(),
               QStringLiteral("on line %1").arg(pushLine.id)) ||
        !expectRoomLive(true)) {
        return;
    }
    showLiveRoomSettings(kDemoCid2);
    followBarrage();
    if (check(QStringLiteral("stop_live_room"), service_.stop_live_room())) {
        expectRoomLive(false);
        awaitShowEnd();
    }
}

void DemoRoad::showCategoryTree() {
    std::vector<CategoryNode> tree, suggestions;
    std::string message;
    const int32_t code = service_.getClassifyInfo(tree, suggestions, message);
    if (!check(QStringLiteral("getClassifyInfo"), code, message,
               QStringLiteral("%1 top-level categories").arg(tree.size()))) {
        return;
    }
    for (const CategoryNode& level1 : tree) {
        QStringList level2Names;
        for (const CategoryNode& level2 : level1.children) {
            level2Names
                << QStringLiteral("%1 [%2]").arg(text(level2.name)).arg(level2.children.size());
        }
        step(QStringLiteral("  ") + text(level1.name), level2Names.join(QStringLiteral(", ")));
    }
    QStringList suggested;
    for (const CategoryNode& group : suggestions) {
        QStringList names;
        for (const CategoryNode& level2 : group.children) {
            names << text(level2.name);
        }
        suggested << QStringLiteral("%1: %2").arg(text(group.name),
                                                  names.join(QStringLiteral(", ")));
    }
    step(QStringLiteral("  suggested"), suggested.join(QStringLiteral("; ")));
}

bool DemoRoad::pickCategory() {
    std::string message;
    if (!check(QStringLiteral("setLiveClassify"),
               service_.setLiveClassify(kDemoCid2, kDemoCid3, message), message,
               QStringLiteral("%1 / %2").arg(kDemoCid2).arg(kDemoCid3))) {
        return false;
    }
    // The room information is where the platform tells what it stored.
    service_.refreshRoomInfo();
    RoomSummary room;
    service_.getRoomRecord(room);
    return expect(QStringLiteral("room category"), room.cateId == kDemoCid2,
                  QStringLiteral("%1 (%2 / %3)")
                      .arg(room.cateId)
                      .arg(text(room.gameName), text(room.childName)));
}

bool DemoRoad::pickTag() {
    bool hasTags = false;
    int32_t hasIcon = 0;
    std::string groupName, message;
    std::vector<CategoryNode> tags;
    const int32_t code = service_.getLiveTags(hasTags, hasIcon, groupName, tags, message);
    QStringList names;
    for (const CategoryNode& tag : tags) {
        names << QStringLiteral("%1 %2").arg(tag.id).arg(text(tag.name));
    }
    // A category without tags leaves nothing to pick, which the demo's category should not be.
    const QString shown = QStringLiteral("%1: %2; has icon %3")
                              .arg(text(groupName), names.join(QStringLiteral(", ")))
                              .arg(hasIcon);
    const bool listed = code == 0
                            ? expect(QStringLiteral("getLiveTags"), hasTags && !tags.empty(), shown)
                            : check(QStringLiteral("getLiveTags"), code, message);
    if (!listed) {
        return false;
    }
    const CategoryNode& picked = tags.front();
    return check(QStringLiteral("setGameTag"), service_.setGameTag(picked.id, message), message,
                 QStringLiteral("%1 %2").arg(picked.id).arg(text(picked.name)));
}

void DemoRoad::showVoiceCheck() {
    bool isVoice = false;
    std::string message;
    const int32_t code = service_.classifyIsVoice(&isVoice, message);
    if (code == kNotVoiceAnswer) {
        step(QStringLiteral("classifyIsVoice"), QStringLiteral("no (%1)").arg(text(message)));
        return;
    }
    check(QStringLiteral("classifyIsVoice"), code, message,
          isVoice ? QStringLiteral("yes") : QStringLiteral("no"));
}

void DemoRoad::setLiveParameters() {
    LiveParameters parameters;
    parameters.cid2 = kDemoCid2;
    parameters.cid3 = kDemoCid3;
    // The answer is the word that packs the three live flags, not a result code.
    const int32_t flags = service_.setLiveParameters(parameters);
    step(QStringLiteral("setLiveParameters"), QStringLiteral("cid2 %1, cid3 %2, flags 0x%3")
                                                  .arg(parameters.cid2)
                                                  .arg(parameters.cid3)
                                                  .arg(flags, 0, 16));
}

bool DemoRoad::listPushLines(PushAddress& firstMainLine) {
    PushAddress* mainLines = nullptr;
    PushAddress* h265Lines = nullptr;
    int32_t mainCount = 0, h265Count = 0;
    const int32_t code =
        service_.get_all_rtmp_addresses(mainLines, mainCount, h265Lines, h265Count);
    const bool listed = code == 0 && mainLines != nullptr && mainCount > 0;
    if (expect(
            QStringLiteral("get_all_rtmp_addresses"), listed,
            QStringLiteral("code %1: %2 main, %3 H.265").arg(code).arg(mainCount).arg(h265Count))) {
        for (int32_t i = 0; i < mainCount; ++i) {
            step(QStringLiteral("  main"), lineText(mainLines[i]));
        }
        for (int32_t i = 0; h265Lines != nullptr && i < h265Count; ++i) {
            step(QStringLiteral("  H.265"), lineText(h265Lines[i]));
        }
        firstMainLine = mainLines[0];
    }
    // The arrays are the module's, handed over even with a refusal; only it may free them.
    service_.freeArray(mainLines);
    service_.freeArray(h265Lines);
    step(QStringLiteral("freeArray"), QStringLiteral("main and H.265 arrays"));

    std::vector<PushAddress> copies;
    const bool copied = service_.getRtmpAddressList(copies);
    expect(QStringLiteral("getRtmpAddressList"),
           copied && static_cast<int32_t>(copies.size()) == mainCount,
           QStringLiteral("%1 copies").arg(copies.size()));
    PushAddress roomLine;
    const int32_t roomLineCode = service_.get_rtmp_address(roomLine.url, roomLine.id);
    check(QStringLiteral("get_rtmp_address"), roomLineCode, std::string(), lineText(roomLine));
    return listed;
}

bool DemoRoad::expectRoomLive(bool live) {
    bool isLive = false, showType = false;
    const int32_t code = service_.getRoomState(isLive, showType);
    if (code != 0) {
        return check(QStringLiteral("getRoomState"), code);
    }
    return expect(QStringLiteral("getRoomState"), isLive == live,
                  isLive ? QStringLiteral("live") : QStringLiteral("offline"));
}

void DemoRoad::awaitShowEnd() {
    runEvents(kShowEndWaitMs, [this] { return observer_.showEndCount() > 0; });
    expect(QStringLiteral("show-end notices"), observer_.showEndCount() > 0,
           QString::number(observer_.showEndCount()));
}
