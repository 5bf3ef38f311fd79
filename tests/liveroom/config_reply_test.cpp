#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "liveroom/catalogue_parsers.h"
#include "parse/data_parser.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

using namespace tolvane::liveroom;

// The configuration files the module reads, each through its own parser: gift template, prop
// list, a resource file and the emotion white list. Each returns its result and a summary of
// what it read ("ids 7" for one entry with id 7).
struct ConfigParser {
    const char* name;
    std::function<int(DataParser&, const QByteArray&, std::string&)> parse;
};

template <typename Record>
std::string idsOf(const std::vector<Record>& records) {
    std::string ids = "ids";
    for (const Record& record : records) {
        ids += ' ' + std::to_string(record.id);
    }
    return ids;
}

const std::vector<ConfigParser>& configParsers() {
    static const std::vector<ConfigParser> parsers = {
        {"gift template",
         [](DataParser& parser, const QByteArray& body, std::string& read) {
             std::vector<VxGiftRecord> gifts;
             std::vector<VxGiftSkinRecord> skins;
             const int result = parseGiftList(parser, body, gifts, skins);
             read = idsOf(gifts);
             return result;
         }},
        {"prop list",
         [](DataParser& parser, const QByteArray& body, std::string& read) {
             std::vector<VxPropRecord> props;
             const int result = parsePropList(parser, body, props);
             read = idsOf(props);
             return result;
         }},
        {"resource file",
         [](DataParser& parser, const QByteArray& body, std::string& read) {
             std::vector<VxResourceRecord> records;
             const int result = parseResourceFile(parser, body, "id", records);
             read = idsOf(records);
             return result;
         }},
        {"emotion white list",
         [](DataParser& parser, const QByteArray& body, std::string& read) {
             const int result = parser.parseEmotionSeiyClassifyList(body);
             read = idsOf(parser.emotionWhiteList());
             return result;
         }},
    };
    return parsers;
}

// The body for a parser: the catalogue's files list entries, the emotion file lists ids.
QByteArray fileFor(const ConfigParser& parser, const char* data) {
    const bool emotion = std::string(parser.name) == "emotion white list";
    return QByteArray(data).replace("LIST",
                                    emotion ? R"("white_cate2_list":[7])" : R"("list":[{"id":7}])");
}

TEST(ConfigReplies, ReadWithoutTheEnvelopeAndLogTheRawBodyWhenBroken) {
    IsolatedWorkspace workspace;
    struct Case {
        const char* what;
        const char* body;  // LIST stands for the file's list
        int result;
        bool logged;  // "parse data failed!" and the raw body
    };
    const Case cases[] = {
        {"as static files are served", R"(VXConfigCallback({"data":{LIST}}))", 0, false},
        {"with an envelope", R"(VXConfigCallback({"error":0,"data":{LIST}}))", 0, false},
        {"an error member is not read", R"(cb({"error":1404,"data":{LIST}}))", 0, false},
        {"empty between the parentheses", "VXConfigCallback()", 1, false},
        {"not JSON", "VXConfigCallback(<html>)", 1, true},
        {"not an object", R"(VXConfigCallback([{LIST}]))", 1, true},
        {"no data", R"(VXConfigCallback({"error":0,"list":[]}))", 1, true},
        {"data not an object", R"(VXConfigCallback({"data":[{LIST}]}))", 1, true},
    };
    for (const ConfigParser& parser : configParsers()) {
        DataParser dataParser;
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(parser.name) + ": " + c.what);
            // Seeded with a good file, so a broken one must leave the emotion list as it was.
            std::string read;
            ASSERT_EQ(parser.parse(dataParser, fileFor(parser, R"(f({"data":{LIST}}))"), read), 0);
            const QByteArray body = fileFor(parser, c.body);
            const int before = readLogMessages(tolvane::log::kMainLog).size();
            EXPECT_EQ(parser.parse(dataParser, body, read), c.result);
            const QStringList lines = readLogMessages(tolvane::log::kMainLog).mid(before);
            EXPECT_EQ(lines.contains("parse data failed!"), c.logged)
                << lines.join('\n').toStdString();
            EXPECT_EQ(lines.contains("srcData: " + QString::fromUtf8(body)), c.logged);
            if (c.result == 0 || std::string(parser.name) == "emotion white list") {
                EXPECT_EQ(read, "ids 7");
            }
        }
    }
}

}  // namespace
