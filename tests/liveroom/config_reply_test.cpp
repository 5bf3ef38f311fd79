#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "liveroom/catalogue_parsers.h"
#include "parse/data_parser.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

using namespace tolvane::liveroom;

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
TEST(ConfigReplies, ReadWithoutTheEnvelopeAndLogTheRawBodyWhenBroken) {
    IsolatedWorkspace workspace;
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
