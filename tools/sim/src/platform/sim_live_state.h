#pragma once

#include <QJsonValue>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::sim {

// One push line of a room: the server's line id and the RTMP address to push to.
struct SimPushLine {
    int id = 0;
    std::string url;
};

// How one list of the line reply is written.
enum class SimLineListShape { Lines, Empty, Absent };

// A refusal of the line request instead of the lines: 608 (the room may not open now) or
// 9 (the anchor must verify first).
struct SimLineRefusal {
    int code = 0;  // 0: no refusal
    std::string message;
    std::string reason;
    std::string openTime;
    double duration = 0;
    std::string refUrl;

    static SimLineRefusal roomClosed(std::string reason, std::string openTime, double duration,
                                     std::string message = "直播间暂不可开播");
    static SimLineRefusal verificationNeeded(std::string message, std::string refUrl);
};

// The main push address of the room information: rtmp_send_url + "/" + rtmp_send_live.
struct SimSendAddress {
    QJsonValue id;  // a number, or a text such as "-1"
    std::string url;
    std::string live;
};

// Everything about one room's push lines.
struct SimRoomLines {
    std::string fmsValue;
    std::vector<SimPushLine> main;  // in the platform's preferred order ("list_sort")
    std::vector<SimPushLine> h265;
    SimLineListShape list = SimLineListShape::Lines;
    SimLineListShape listSort = SimLineListShape::Lines;
    SimLineListShape h265List = SimLineListShape::Lines;
    SimLineRefusal refusal;
    // Replaces the address derived from the first main line.
    std::optional<SimSendAddress> sendAddress;

    // True when the id names one of the main or H.265 lines.
    bool hasLine(int lineId) const;
};

// What a line request asked for, as texts ("" when the item was not sent).
struct SimLineRequest {
    std::string cid2;
    std::string cid3;
    std::string moduleId;
};

// The rooms' push lines and the live-show events around them; safe from server threads and
// tests at once.
class SimLiveState {
public:
    SimLiveState();  // loads the compiled-in push-line fixture

    // A room the fixture does not name has no lines and an empty fms value.
    SimRoomLines lines(int roomId) const;
    void setLines(int roomId, SimRoomLines lines);
    void update(int roomId, const std::function<void(SimRoomLines&)>& change);

    // The first main line split at its last "/", unless a test set the address.
    SimSendAddress sendAddress(int roomId) const;

    void recordLineRequest(int roomId, SimLineRequest request);
    std::optional<SimLineRequest> lastLineRequest(int roomId) const;

    // Called on the server thread whenever a room's show ends, with the room id.
    void setShowEndedListener(std::function<void(int)> listener);
    void endShow(int roomId);

private:
    mutable std::mutex mutex_;
    std::map<int, SimRoomLines> rooms_;
    std::map<int, SimLineRequest> lineRequests_;
    std::function<void(int)> showEnded_;
};

}  // namespace tolvane::sim
