#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "http/sim_signature.h"
#include "platform/sim_platform_state.h"
#include "sim/sim_test_support.h"
#include "support/sim_service_fixture.h"

namespace tolvane::sim {
extern const char* const kCategoriesFixture;
}  // namespace tolvane::sim

namespace {

using tolvane::sim::SimPlatformState;
using tolvane::sim::sortedQueryText;

// The services' refusals that the module cannot provoke itself: it only ever names lines and
// categories it was given, and sends them with a fresh session and time.
class SimLiveServices : public SimServiceTest {
protected:
    std::string sessionOf(const char* account) {
        const auto grant = platform().grantLogin(*platform().accountByName(account));
        const tolvane::sim::SimSession& s = grant.session;
        return s.uid + "_" + std::to_string(s.bizType) + "_" + s.shortToken + "_" +
               std::to_string(s.clientType) + "_" + std::to_string(s.longTokenId);
    }

    // A signed POST of the form: aid, time and auth travel as headers for a mobile API, in the
    // query for an own-URL request.
    QJsonObject signedPost(const std::string& path, const std::string& signingPath,
                           const Pairs& form, bool inHeaders, int skew = 0) {
        const std::string time = std::to_string(platform().nowSeconds() + skew);
        const std::string auth = authCode(
            signingPath + "?aid=vxtool&time=" + time + "%s&" + sortedQueryText(form), false);
        const Pairs signature = {{"aid", "vxtool"}, {"time", time}, {"auth", auth}};
        Pairs headers = signature;
        headers.emplace_back("client_sys", "pc");
        httplib::Client client = clientFor(sim().http().origin());
        const httplib::Result result =
            client.Post((inHeaders ? path : path + "?" + encodePairs(signature)).c_str(),
                        inHeaders ? toHeaders(headers) : httplib::Headers(), encodePairs(form),
                        "application/x-www-form-urlencoded");
        EXPECT_TRUE(result) << httplib::to_string(result.error());
        return jsonBody(result);
    }
};

TEST_F(SimLiveServices, StartLiveNeedsTheRoomsLineAndFmsValue) {
    const std::string fms = platform().liveState().lines(880001).fmsValue;
    const std::string anchor = sessionOf("anchor");
    // clang-format off
    const std::tuple<const char*, std::string, const char*, std::string, int, int> cases[] = {
        {"UnknownLine", anchor, "99", fms, 0, 4002},
        {"LineIdNotANumber", anchor, "3x", fms, 0, 4002},
        {"StaleFms", anchor, "1", "fms-880001-old", 0, 4003},
        {"NoSession", "10001_13_nosuch_3_1", "3", fms, 0, 606},
        {"TimeOutOfWindow", anchor, "3", fms, -400, 1011},
        {"AccountWithoutRoom", sessionOf("traveller"), "3", fms, 0, 4001},
    };
    // clang-format on
    const std::string path = "mgapi/livenc/anchor/startLive";
    for (const auto& [name, token, lineId, fmsValue, skew, error] : cases) {
        SCOPED_TRACE(name);
        // clang-format off
        const Pairs form = {{"token", token}, {"client_sys", "pc"}, {"fms_val", fmsValue},
            {"rtmp_id", lineId}, {"live_client_type", "11"}, {"room_live_type", "0"},
            {"is_third_party_obs", "0"}, {"is_rtc", "0"}, {"is_hdr", "0"}};
        // clang-format on
        const QJsonObject reply = signedPost("/" + path, path, form, true, skew);
        EXPECT_EQ(reply.value("error").toInt(-1), error);
        EXPECT_FALSE(reply.value("data").toString().isEmpty());
        EXPECT_FALSE(platform().live());
    }
}

using SimCloseLive = BarrageSimServiceTest;

TEST_F(SimCloseLive, EndsTheShowForConnectedBarrageClients) {
    login();
    startAndWait();
    platform().setLive(true);
    EXPECT_EQ(service().stop_live_room(), 0);
    EXPECT_FALSE(platform().live());
    // Reason 1 (closed by the anchor) reaches the host as 0, without ban hours.
    ASSERT_TRUE(waitUntil([&] { return !observer_.events("end ").empty(); }))
        << "watchdog: waiting for the show's end";
    EXPECT_EQ(observer_.events("end "), std::vector<std::string>{"end 0 0.000000"});
}

TEST_F(SimLiveServices, CategoryAndTagRefusals) {
    const std::string token = sessionOf("anchor");
    const std::string updateCate = "/livenc/liveTool/updateCate";
    const std::string updateTag = "/api/videoPartner/updateCidTagInfo";
    // clang-format off
    const std::tuple<const char*, std::string, std::string, Pairs, int, const char*> cases[] = {
        {"NoSuchCate2", updateCate, "livenc/liveTool/updateCate", {{"token", token}, {"cid2", "999"}, {"cid3", "0"}}, 4101, "msg"},
        {"Cate3OfAnotherCate2", updateCate, "livenc/liveTool/updateCate", {{"token", token}, {"cid2", "12"}, {"cid3", "2011"}}, 4101, "msg"},
        {"Cate3MissingWhereNeeded", updateCate, "livenc/liveTool/updateCate", {{"token", token}, {"cid2", "12"}, {"cid3", "0"}}, 4101, "msg"},
        {"Cate3WhereNoneExist", updateCate, "livenc/liveTool/updateCate", {{"token", token}, {"cid2", "13"}, {"cid3", "131"}}, 4101, "msg"},
        {"SessionRefusalUsesMsg", updateCate, "livenc/liveTool/updateCate", {{"token", "x"}, {"cid2", "13"}, {"cid3", "0"}}, 606, "msg"},
        {"TagOfAnotherCategory", updateTag, "api/videoPartner/updateCidTagInfo", {{"tid", "2101"}, {"token", token}, {"cid", "12"}, {"ctype", "2"}}, 4102, "data"},
        {"TagOfCategoryWithoutTags", updateTag, "api/videoPartner/updateCidTagInfo", {{"tid", "1201"}, {"token", token}, {"cid", "13"}, {"ctype", "2"}}, 4102, "data"},
        {"JoinWithoutRoom", "/api/videoPartner/join", "/api/videoPartner/join", {{"rid", "0"}}, 4103, "msg"},
    };
    // clang-format on
    for (const auto& [name, path, signingPath, form, error, messageKey] : cases) {
        SCOPED_TRACE(name);
        const QJsonObject reply = signedPost(path, signingPath, form, false);
        EXPECT_EQ(reply.value("error").toInt(-1), error);
        EXPECT_TRUE(reply.value(messageKey).isString());
    }
    // Refusals leave the room as it was.
    const auto category = platform().categories().category(880001);
    ASSERT_TRUE(category.has_value());
    EXPECT_EQ(category->cid2, 12);
    EXPECT_EQ(category->cid3, 121);
    EXPECT_FALSE(platform().categories().tag(880001).has_value());
}

int idOf(const QJsonValue& value) {
    return value.isString() ? value.toString().toInt() : value.toInt();
}

// The fixtures refer to each other by id; an edit that leaves one dangling would quietly turn
// a category test into a test of an unknown category.
TEST(SimFixtures, EveryCategoryReferenceNamesACate2OfTheTree) {
    const QJsonObject root =
        QJsonDocument::fromJson(QByteArray(tolvane::sim::kCategoriesFixture)).object();
    ASSERT_FALSE(root.isEmpty());
    std::set<int> tree;
    for (const QJsonValue& cate1 : root.value("cate_list").toArray()) {
        for (const QJsonValue& cate2 : cate1.toObject().value("cate2List").toArray()) {
            tree.insert(idOf(cate2.toObject().value("cate2_id")));
        }
    }
    std::vector<std::pair<std::string, int>> references;
    for (const char* list : {"partner_cate2", "voice_cate2"}) {
        for (const QJsonValue& id : root.value(list).toArray()) {
            references.emplace_back(list, id.toInt());
        }
    }
    for (const QString& key : root.value("tags").toObject().keys()) {
        references.emplace_back("tags", key.toInt());
    }
    for (const QJsonValue& suggestion : root.value("cate_suggest").toArray()) {
        for (const QJsonValue& entry : suggestion.toObject().value("cate_list").toArray()) {
            references.emplace_back("cate_suggest", idOf(entry.toObject().value("cate2_id")));
        }
    }
    for (const QJsonValue& room : root.value("rooms").toObject()) {
        references.emplace_back("rooms", room.toObject().value("cid2").toInt());
    }
    for (const int id : SimPlatformState().emotionWhiteList()) {
        references.emplace_back("emotion white list", id);
    }
    for (const auto& [where, id] : references) {
        EXPECT_EQ(tree.count(id), 1u) << where << " names " << id;
    }
}

TEST(SimFixtures, TheAnchorsLineIdsAreUnique) {
    SimPlatformState state;
    // startLive finds a line by its id in either list, so ids must not repeat across them.
    const auto lines = state.liveState().lines(880001);
    std::set<int> ids;
    for (const auto* list : {&lines.main, &lines.h265}) {
        for (const auto& line : *list) {
            EXPECT_TRUE(ids.insert(line.id).second) << "line id " << line.id << " repeats";
        }
    }
    EXPECT_FALSE(lines.main.empty());
    EXPECT_FALSE(lines.h265.empty());
}

}  // namespace
