#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "liveroom/catalogue_parsers.h"
#include "parse/data_parser.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

using namespace tolvane::liveroom;

class CatalogueParsers : public ::testing::Test {
protected:
    IsolatedWorkspace workspace_;  // the parsers log
    DataParser parser_;
};

TEST_F(CatalogueParsers, GiftListKeepsUsableEntriesAndSplitsOutSkins) {
    const QByteArray reply = R"(VXConfigCallback({"data":{"list":[
        {"id":100,"name":"Rose","price":"10","icon":"r.png","skins":[{"id":1001,"name":"Gold"},
                                                                    {"id":0,"name":"no id"}]},
        {"id":"101","name":"Stick","price":20},
        {"name":"no id at all","price":5},
        {"id":-3,"name":"negative"},
        "not an object",
        {"id":102,"price":"lots"}]}}))";
    std::vector<VxGiftRecord> gifts;
    std::vector<VxGiftSkinRecord> skins;
    ASSERT_EQ(parseGiftList(parser_, reply, gifts, skins), 0);
    ASSERT_EQ(gifts.size(), 3u);
    EXPECT_EQ(gifts[0].name, "Rose");
    EXPECT_EQ(gifts[0].price, 10);  // prices may come as text
    EXPECT_EQ(gifts[0].skinIds, std::vector<int32_t>{1001});
    EXPECT_EQ(gifts[1].id, 101);
    EXPECT_EQ(gifts[2].price, 0);
    ASSERT_EQ(skins.size(), 1u);
    EXPECT_EQ(skins[0].giftId, 100);
    EXPECT_EQ(skins[0].name, "Gold");
}

TEST_F(CatalogueParsers, RefusedRepliesGiveTheirCodes) {
    const struct {
        const char* name;
        QByteArray reply;
        int expected;
    } cases[] = {
        {"session code mapped", R"({"error":606,"data":"expired"})", 220},
        {"no data object", R"({"error":0,"data":[1,2]})", 1},
        {"single entry without id", R"({"error":0,"data":{"name":"x"}})", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        VxGiftRecord gift;
        std::vector<VxGiftSkinRecord> skins;
        EXPECT_EQ(parseSingleGift(parser_, c.reply, gift, skins), c.expected);
        VxPropRecord prop;
        EXPECT_EQ(parseSingleProp(parser_, c.reply, prop), c.expected);
    }
}

TEST_F(CatalogueParsers, ResourceFilesAreUnwrappedAndKeyedByTheirOwnIdKey) {
    const QByteArray wrapped =
        R"(VXConfigCallback({"error":0,"data":{"list":[)"
        R"({"noble_level":2,"name":"Viscount","icon":"v.png","effect":"fly"},)"
        R"({"level":9,"name":"keyed by the wrong key"}]}}))";
    std::vector<VxResourceRecord> records;
    ASSERT_EQ(parseResourceFile(parser_, wrapped, "noble_level", records), 0);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].id, 2);
    EXPECT_EQ(records[0].name, "Viscount");
    // Fields the store has no column for stay readable.
    EXPECT_NE(records[0].json.find(R"("effect":"fly")"), std::string::npos);
}

TEST_F(CatalogueParsers, AHugeListIsCutAtTheLimit) {
    QByteArray reply = R"(VXConfigCallback({"data":{"list":[)";
    for (int i = 1; i <= kMaxCatalogueEntries + 5; ++i) {
        reply += (i > 1 ? "," : "") + QByteArray(R"({"id":)") + QByteArray::number(i) + "}";
    }
    reply += "]}})";
    std::vector<VxPropRecord> props;
    ASSERT_EQ(parsePropList(parser_, reply, props), 0);
    EXPECT_EQ(props.size(), static_cast<std::size_t>(kMaxCatalogueEntries));
}

template <typename Record>
int countOf(int result, const std::vector<Record>& records) {
    return result == 0 ? static_cast<int>(records.size()) : -1;
}

// Each configuration file's parser, giving the number of entries read or -1 for a failure.
const std::vector<std::pair<const char*, std::function<int(DataParser&, const QByteArray&)>>>
    kParsers = {
        {"gift template",
         [](DataParser& parser, const QByteArray& body) {
             std::vector<VxGiftRecord> gifts;
             std::vector<VxGiftSkinRecord> skins;
             return countOf(parseGiftList(parser, body, gifts, skins), gifts);
         }},
        {"prop list",
         [](DataParser& parser, const QByteArray& body) {
             std::vector<VxPropRecord> props;
             return countOf(parsePropList(parser, body, props), props);
         }},
        {"resource file",
         [](DataParser& parser, const QByteArray& body) {
             std::vector<VxResourceRecord> records;
             return countOf(parseResourceFile(parser, body, "id", records), records);
         }},
        {"emotion white list",
         [](DataParser& parser, const QByteArray& body) {
             const int result = parser.parseEmotionSeiyClassifyList(body);
             return result != 0 ? -1 : static_cast<int>(parser.emotionWhiteList().size());
         }},
};

// The files carry no envelope: an "error" member is not read, an empty body gives 1, and a body
// without a "data" object is logged as it came. A broken file leaves the white list as it was.
TEST_F(CatalogueParsers, ConfigFilesReadWithoutTheEnvelopeAndLogTheRawBodyWhenBroken) {
    const struct {
        const char* what;
        const char* body;  // LIST stands for the file's list of one entry
        int read;          // entries, or -1 for a failure
        bool logged;       // "parse data failed!" and the raw body
    } cases[] = {
        {"as static files are served", R"(VXConfigCallback({"data":{LIST}}))", 1, false},
        {"with an envelope", R"(VXConfigCallback({"error":0,"data":{LIST}}))", 1, false},
        {"an error member is not read", R"(cb({"error":1404,"data":{LIST}}))", 1, false},
        {"empty between the parentheses", "VXConfigCallback()", -1, false},
        {"without its callback", R"({"error":0,"data":{LIST}})", -1, false},
        {"not JSON", "VXConfigCallback(<html>)", -1, true},
        {"not an object", R"(VXConfigCallback([{LIST}]))", -1, true},
        {"no data", R"(VXConfigCallback({"error":0,"list":[]}))", -1, true},
        {"data not an object", R"(VXConfigCallback({"data":[{LIST}]}))", -1, true},
    };
    for (const auto& [name, parse] : kParsers) {
        const bool emotion = std::string(name) == "emotion white list";
        const auto file = [emotion](const char* text) {
            return QByteArray(text).replace(
                "LIST", emotion ? R"("white_cate2_list":[7])" : R"("list":[{"id":7}])");
        };
        DataParser parser;
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(name) + ": " + c.what);
            ASSERT_EQ(parse(parser, file(R"(f({"data":{LIST}}))")), 1);
            const int before = readLogMessages(tolvane::log::kMainLog).size();
            EXPECT_EQ(parse(parser, file(c.body)), c.read);
            const QStringList lines = readLogMessages(tolvane::log::kMainLog).mid(before);
            EXPECT_EQ(lines.contains("parse data failed!"), c.logged);
            EXPECT_EQ(lines.contains("srcData: " + QString::fromUtf8(file(c.body))), c.logged);
            if (emotion) {
                EXPECT_EQ(parser.emotionWhiteList().size(), 1u);
            }
        }
    }
}

}  // namespace
