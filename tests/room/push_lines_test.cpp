#include <gtest/gtest.h>

#include <QStringList>
#include <thread>
#include <tuple>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/replies.h"
#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;
using tolvane::sim::SimLineRefusal;
using tolvane::sim::SimRoomLines;

const std::string kDataError = tolvane::kReplyDataErrorText;
const std::string kNoMessage = tolvane::kReplyNoMessageText;

// The arrays of one call, freed the way a host frees them: through the service that handed them
// out, or with delete[] when they came straight from the parser.
struct HandedOut {
    explicit HandedOut(VxNetServiceImp* service = nullptr) : service(service) {}
    ~HandedOut() {
        for (PushAddress* array : {lines, h265}) {
            if (service != nullptr) {
                service->freeArray(array);
            } else {
                delete[] array;
            }
        }
    }
    int parse(DataParser& parser, const QByteArray& reply) {
        return parser.parseAllRtmpAddressResult(reply, lines, count, h265, h265Count);
    }
    int32_t fetch() { return service->get_all_rtmp_addresses(lines, count, h265, h265Count); }

    VxNetServiceImp* service;
    PushAddress* lines = nullptr;
    int32_t count = 0;
    PushAddress* h265 = nullptr;
    int32_t h265Count = 0;
};

// "url#id" of every element, "unset" when no array was handed out.
std::string linesText(const PushAddress* lines, int32_t count) {
    QStringList parts;
    for (int32_t i = 0; lines != nullptr && i < count; ++i) {
        parts << QString::fromStdString(lines[i].url) + '#' + QString::number(lines[i].id);
    }
    return lines == nullptr ? "unset" : parts.join(',').toStdString();
}

// "url=id" of each probed URL that either table knows.
std::string knownLines(const DataParser& parser) {
    QStringList known;
    for (const char* url : {"old/main", "old/h265", "u1", "u2", "u3", "h1"}) {
        int32_t id = 0;
        if (parser.findPushLine(url, id)) {
            known << QString::fromLatin1(url) + '=' + QString::number(id);
        }
    }
    return known.join(',').toStdString();
}

// Both tables hold one line each and the fms value is "f0".
void seed(DataParser& parser) {
    ASSERT_EQ(HandedOut().parse(parser,
                                okReply(R"({"fms_val":"f0","list_sort":[{"id":1,"url":"old/main"}],
                                            "h265_list_sort":[{"id":2,"url":"old/h265"}]})")),
              0);
}

TEST(PushLinesParse, AllAddressReplies) {
    const std::string seeded = "old/main=1,old/h265=2";
    struct Case {
        QByteArray reply;
        int result;
        std::string lines, h265, known, message, fms;
    };
    const Case cases[] = {
        // Entries that are not objects leave the tail of the array empty but still count.
        {okReply(R"({"fms_val":"f1","list":[{"17":"u1"},5,{"3":"u2"},{}]})"), 0, "u1#17,u2#3,#0,#0",
         "unset", "old/h265=2,u1=17,u2=3", "", "f1"},
        {okReply(
             R"({"list":[{"17":"u1"}],"list_sort":[{"id":4,"url":"u2"},{"id":"5","url":"u3"}]})"),
         0, "u2#4,u3#5", "unset", "old/h265=2,u2=4,u3=5", "", ""},
        {okReply(R"({"list":[{"17":"u1"}],"list_sort":[]})"), 1, "u1#17", "unset",
         "old/h265=2,u1=17", kDataError, ""},
        {okReply(R"({"list_sort":[]})"), 1, "unset", "unset", seeded, kDataError, ""},
        {okReply(R"({"list":[],"list_sort":[{"id":4,"url":"u2"}]})"), 1, "unset", "unset", seeded,
         kDataError, ""},
        {okReply(R"({"h265_list_sort":[{"id":9,"url":"h1"}]})"), 0, "unset", "h1#9",
         "old/main=1,h1=9", "", ""},
        {okReply(R"({"h265_list_sort":[],"list_sort":[{"id":4,"url":"u2"}]})"), 0, "u2#4", "",
         "u2=4", "", ""},
        {R"({"error":608,"data":{"reason":"night","open_time":"08:00","duration":1234567.5}})", 217,
         "night#0,08:00#0,1.23457e+06#0", "unset", seeded, kNoMessage, "f0"},
        {R"({"error":608,"data":"closed"})", 217, "unset", "unset", seeded, "closed", "f0"},
        {R"({"error":9,"data":{"msg":"verify first","ref_url":"https://ref"}})", 223, "unset",
         "unset", seeded, "verify first", "f0"},
        {R"({"error":9,"data":"verify first"})", 1, "unset", "unset", seeded, kDataError, "f0"},
        {R"({"error":0,"data":[]})", 1, "unset", "unset", seeded, kDataError, "f0"},
    };
    for (const Case& c : cases) {
        DataParser parser;
        seed(parser);
        HandedOut out;
        EXPECT_EQ(out.parse(parser, c.reply), c.result) << c.reply.constData();
        EXPECT_EQ(linesText(out.lines, out.count), c.lines) << c.reply.constData();
        EXPECT_EQ(linesText(out.h265, out.h265Count), c.h265) << c.reply.constData();
        EXPECT_EQ(knownLines(parser), c.known) << c.reply.constData();
        EXPECT_EQ(parser.lastErrorMessage(), c.message) << c.reply.constData();
        EXPECT_EQ(parser.fmsValue(), c.fms) << c.reply.constData();
        EXPECT_EQ(parser.referenceUrl(), c.result == 223 ? "https://ref" : "");
    }
    const QStringList log = readLogMessages(tolvane::log::kMainLog);
    EXPECT_EQ(log.filter("list_sort num:").size(), 2);
    EXPECT_TRUE(log.contains("list_sort num:0 error:" + okReply(R"({"list_sort":[]})")));
}

TEST(PushLinesParse, SingleAddressReplies) {
    struct Case {
        QByteArray reply;
        int result;
        std::string url;  // starts as "before"
        int32_t id;       // starts as 99
    };
    const Case cases[] = {
        {okReply(R"({"rtmp_send_id":7,"rtmp_send_url":"u1","rtmp_send_live":"k?t=1"})"), 0,
         "u1/k?t=1", 7},
        {okReply(R"({"rtmp_send_id":"12","rtmp_send_url":"u1/","rtmp_send_live":"k"})"), 0, "u1//k",
         12},
        {okReply(R"({"rtmp_send_id":"-1","rtmp_send_url":"u2","rtmp_send_live":"k"})"), 0, "u2/k",
         -1},
        {okReply(R"({"rtmp_send_id":8,"rtmp_send_url":"u1","rtmp_send_live":""})"), 1, "before", 8},
    };
    for (const Case& c : cases) {
        DataParser parser;
        seed(parser);
        std::string url = "before";
        int32_t id = 99;
        EXPECT_EQ(parser.parseRtmpResult(c.reply, url, id), c.result) << c.reply.constData();
        EXPECT_EQ(url, c.url) << c.reply.constData();
        EXPECT_EQ(id, c.id) << c.reply.constData();
        EXPECT_EQ(parser.lastErrorMessage(), "");
        // The line joins the main table without clearing it.
        int32_t found = 0;
        EXPECT_EQ(parser.findPushLine(url, found), c.result == 0) << c.reply.constData();
        EXPECT_EQ(found, c.result == 0 ? c.id : 0) << c.reply.constData();
        EXPECT_TRUE(parser.findPushLine("old/main", found)) << c.reply.constData();
    }
}

TEST(PushLinesParse, ResetForgetsLinesAndStoredValues) {
    DataParser parser;
    seed(parser);
    HandedOut().parse(parser, R"({"error":9,"data":{"msg":"m","ref_url":"https://ref"}})");
    parser.setCurrentCategory(12, 34);
    parser.reset();
    EXPECT_EQ(knownLines(parser), "");
    EXPECT_EQ(parser.fmsValue() + parser.referenceUrl(), "");
    EXPECT_EQ(parser.currentCid2() + parser.currentCid3(), 0);
}

// Lines are looked up while replies and a logout replace them; TSan watches the lock.
TEST(PushLinesParse, LookupWhileRepliesArrive) {
    DataParser parser;
    std::thread reader([&parser] {
        for (int32_t i = 0, id = 0; i < 200; ++i) {
            parser.findPushLine("u1", id);
        }
    });
    for (int i = 0; i < 50; ++i) {
        HandedOut().parse(parser, okReply(R"({"list_sort":[{"id":3,"url":"u1"}]})"));
        if (i % 10 == 0) {
            parser.reset();
        }
    }
    reader.join();
    EXPECT_EQ(knownLines(parser), "u1=3");
}

const char kStartLive[] = "/mgapi/livenc/anchor/startLive";
const std::string kMainLine3 = "rtmp://push-c.tolvane.example/live/880001_c3?key=9f1e";
const std::string kH265Line12 = "rtmp://push-h.tolvane.example/live265/880001_h12?key=d00d";

class LiveService : public LoggedInSimServiceTest {
protected:
    bool roomIsLive() {
        bool live = false, showType = false;
        EXPECT_EQ(service().getRoomState(live, showType), 0);
        return live;
    }
};

TEST_F(LiveService, GoesLiveOnAHandedOutLineAndCloses) {
    HandedOut lines(&service());
    ASSERT_EQ(lines.fetch(), 0);
    ASSERT_EQ(lines.count, 3);
    EXPECT_EQ(linesText(lines.lines, 1), kMainLine3 + "#3");
    EXPECT_EQ(lines.h265Count, 2);
    std::vector<PushAddress> copy;
    EXPECT_TRUE(service().getRtmpAddressList(copy));
    EXPECT_EQ(linesText(copy.data(), static_cast<int32_t>(copy.size())),
              linesText(lines.lines, lines.count));

    // An address the platform never handed out is refused before anything is sent.
    EXPECT_EQ(service().open_live_room("rtmp://elsewhere.example/live/x"), 1);
    EXPECT_TRUE(requestsTo(kStartLive).empty());

    EXPECT_FALSE(roomIsLive());
    ASSERT_EQ(service().open_live_room(kMainLine3), 0);
    EXPECT_TRUE(roomIsLive());
    EXPECT_EQ(requestsTo(kStartLive).size(), 1u);  // what it sends is in the recorded wire file

    EXPECT_EQ(service().stop_live_room(), 0);
    EXPECT_FALSE(roomIsLive());
    // H.265 lines start the show too.
    EXPECT_EQ(service().open_live_room(kH265Line12), 0);
    EXPECT_EQ(requestsTo(kStartLive).back().formValue("rtmp_id"), "12");

    // Logging out forgets every line and the copy.
    service().logout();
    EXPECT_EQ(service().open_live_room(kMainLine3), 1);
    EXPECT_TRUE(service().getRtmpAddressList(copy));
    EXPECT_TRUE(copy.empty());
}

TEST_F(LiveService, CategoryAndModuleAreSentOnlyWhenSet) {
    // The four values set, then cid2|cid3|module_id|is_audio as the platform saw them.
    const std::tuple<int32_t, int32_t, int32_t, int32_t, const char*> cases[] = {
        {0, 121, 0, 0, "|||"},
        {12, 121, 0, 1, "12|121||1"},
        {0, 0, 7, 0, "||7|"},
        {12, 0, 7, 0, "12|0|7|"},
    };
    for (const auto& [cid2, cid3, moduleId, isAudio, expected] : cases) {
        SCOPED_TRACE(expected);
        LiveParameters parameters;
        parameters.cid2 = cid2;
        parameters.cid3 = cid3;
        parameters.module_id = moduleId;
        parameters.is_audio = isAudio;
        service().setLiveParameters(parameters);
        HandedOut lines(&service());
        ASSERT_EQ(lines.fetch(), 0);
        ASSERT_EQ(service().open_live_room(kMainLine3), 0);
        const auto sent = requestsTo(kStartLive).back();
        const auto asked = platform().liveState().lastLineRequest(kAnchorRoom);
        ASSERT_TRUE(asked.has_value());
        EXPECT_EQ(asked->cid2 + "|" + asked->cid3 + "|" + asked->moduleId + "|" +
                      sent.formValue("is_audio"),
                  expected);
        EXPECT_EQ(sent.formValue("cid2") + "|" + sent.formValue("cid3") + "|" +
                      sent.formValue("module_id"),
                  asked->cid2 + "|" + asked->cid3 + "|" + asked->moduleId);
    }
}

// Reply shapes are the parser tests'; here, the service's code and log line for a refusal.
TEST_F(LiveService, RefusedListIsLoggedWithItsPath) {
    platform().liveState().update(kAnchorRoom, [](SimRoomLines& room) {
        room.refusal = SimLineRefusal::roomClosed("maintenance", "2030-01-01 08:00", 1.5);
    });
    HandedOut lines(&service());
    EXPECT_EQ(lines.fetch(), 217);
    EXPECT_TRUE(mainLogHas("error Url: mgapi/livenc/anchor/getRtMpList"));
}

TEST_F(LiveService, RoomPushAddressJoinsTheLines) {
    std::string url;
    int32_t lineId = 0;
    ASSERT_EQ(service().get_rtmp_address(url, lineId), 0);
    EXPECT_EQ(lineId, 3);
    EXPECT_EQ(url, kMainLine3);

    // The room's own address is added to the lines handed out, not in place of them.
    HandedOut lines(&service());
    ASSERT_EQ(lines.fetch(), 0);
    platform().liveState().update(kAnchorRoom, [](SimRoomLines& room) {
        room.sendAddress = tolvane::sim::SimSendAddress{QJsonValue(2), "rtmp://other/live", "k"};
    });
    ASSERT_EQ(service().get_rtmp_address(url, lineId), 0);
    EXPECT_EQ(service().open_live_room(url), 0);
    EXPECT_EQ(requestsTo(kStartLive).back().formValue("rtmp_id"), "2");
    EXPECT_EQ(service().open_live_room(kMainLine3), 0);

    // Reply shapes are the parser tests'; a failure leaves the host no address.
    platform().liveState().update(kAnchorRoom, [](SimRoomLines& room) {
        room.sendAddress = tolvane::sim::SimSendAddress{QJsonValue(4), "rtmp://a/live", ""};
    });
    EXPECT_EQ(service().get_rtmp_address(url, lineId), 1);
    EXPECT_EQ(url, "");
}

TEST_F(LiveService, FailedStartsAndExpiredSessions) {
    HandedOut lines(&service());
    ASSERT_EQ(lines.fetch(), 0);  // leaves a kept connection to the mobile service
    const auto profileRequests = [this] { return requestsTo("/api/v1/my_info").size(); };
    // A start is sent once, even when its connection dies unanswered; 606 and 607 refresh the
    // profile, any other refusal does not.
    const std::tuple<SimFault, int32_t, std::size_t> starts[] = {
        {SimFault::closeBeforeReply().oneShot(), 210, 0},
        {SimFault::httpStatus(200, R"({"error":606,"data":"expired"})"), 220, 1},
        {SimFault::httpStatus(200, R"({"error":607,"data":"expired elsewhere"})"), 221, 1},
        {SimFault::httpStatus(200, R"({"error":603,"data":"refused"})"), 214, 0},
    };
    for (const auto& [fault, result, refreshes] : starts) {
        SCOPED_TRACE(result);
        sim().http().setFault(kStartLive, fault);
        const std::size_t before = profileRequests(), sent = requestsTo(kStartLive).size();
        EXPECT_EQ(service().open_live_room(kMainLine3), result);
        EXPECT_EQ(profileRequests(), before + refreshes);
        EXPECT_EQ(requestsTo(kStartLive).size(), sent + 1);
    }
    sim().http().clearFaults();
    EXPECT_EQ(service().open_live_room(kMainLine3), 0);
    service().logout();
    struct Case {
        const char* name;
        std::function<int32_t()> call;
        std::size_t refreshes;
    };
    const Case cases[] = {
        {"lines", [&] { return lines.fetch(); }, 1},
        {"room address",
         [&] {
             std::string url;
             int32_t id = 0;
             return service().get_rtmp_address(url, id);
         },
         1},
        {"close", [&] { return service().stop_live_room(); }, 0},
        {"room state",
         [&] {
             bool live = false, showType = false;
             return service().getRoomState(live, showType);
         },
         1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::size_t before = profileRequests();
        EXPECT_EQ(c.call(), 220);
        EXPECT_EQ(profileRequests(), before + c.refreshes);
    }
    // A request that gets no answer is not an expired session.
    sim().http().setFault("/api/v1/my_room", SimFault::httpStatus(503));
    const std::size_t before = profileRequests();
    EXPECT_EQ(cases[3].call(), 210);
    EXPECT_EQ(profileRequests(), before);
}

}  // namespace
