#include <gtest/gtest.h>

#include <functional>

#include "support/sim_service_fixture.h"

namespace {

using tolvane::sim::SimFault;

class StartAndCategoryRequests : public AnchorRoomSimServiceTest {};

// Starting the show on a known line: an expired session (606 or 607) refreshes the anchor's
// profile once, any other refusal does not.
TEST_F(StartAndCategoryRequests, AnExpiredSessionAtStartRefreshesTheProfile) {
    PushAddress* main = nullptr;
    PushAddress* h265 = nullptr;
    int32_t mainCount = 0, h265Count = 0;
    ASSERT_EQ(service().get_all_rtmp_addresses(main, mainCount, h265, h265Count), 0);
    ASSERT_GT(mainCount, 0);
    const std::string line = main[0].url;
    service().freeArray(main);
    service().freeArray(h265);
    const struct {
        const char* reply;
        int32_t result;
        std::size_t refreshes;
    } cases[] = {
        {R"({"error":606,"data":"expired"})", 220, 1},
        {R"({"error":607,"data":"expired elsewhere"})", 221, 1},
        {R"({"error":603,"data":"refused"})", 214, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reply);
        sim().http().setFault("/mgapi/livenc/anchor/startLive", SimFault::httpStatus(200, c.reply));
        const std::size_t before = requestsTo("/api/v1/my_info").size();
        EXPECT_EQ(service().open_live_room(line), c.result);
        EXPECT_EQ(requestsTo("/api/v1/my_info").size(), before + c.refreshes);
    }
}

// What the category requests send and read beyond their parsers: the category list always
// asks for related categories without the vertical ones, and setting a category reads the
// refusal's message under "msg".
TEST_F(StartAndCategoryRequests, CategoryRequestsSendAndReadTheirFixedKeys) {
    std::vector<CategoryNode> tree, suggestions;
    std::string message;
    ASSERT_EQ(service().getClassifyInfo(tree, suggestions, message), 0) << message;
    const auto sent = lastRequestTo("/api/videoPartner/getAllCateInfo");
    EXPECT_EQ(sent.param("relate"), "1");
    EXPECT_EQ(sent.param("isShowVertical"), "0");

    sim().http().setFault(
        "/livenc/liveTool/updateCate",
        SimFault::httpStatus(200, R"({"error":4101,"msg":"no such","data":"x"})"));
    EXPECT_EQ(service().setLiveClassify(1, 2, message), 4101);
    EXPECT_EQ(message, "no such");
}

}  // namespace
