#include <gtest/gtest.h>

#include <QStringList>
#include <thread>

#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

const std::string kDataError = tolvane::kReplyDataErrorText;
const std::string kNoMessage = tolvane::kReplyNoMessageText;

QByteArray ok(const char* data) {
    return QByteArray(R"({"error":0,"data":)") + data + "}";
}

// The arrays of one call, freed the way the host frees them.
struct HandedOut {
    PushAddress* lines = nullptr;
    int32_t count = 0;
    PushAddress* h265 = nullptr;
    int32_t h265Count = 0;
    ~HandedOut() {
        delete[] lines;
        delete[] h265;
    }
    int parse(DataParser& parser, const QByteArray& reply) {
        return parser.parseAllRtmpAddressResult(reply, lines, count, h265, h265Count);
    }
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
    ASSERT_EQ(
        HandedOut().parse(parser, ok(R"({"fms_val":"f0","list_sort":[{"id":1,"url":"old/main"}],
                                            "h265_list_sort":[{"id":2,"url":"old/h265"}]})")),
        0);
}

TEST(PushLinesParse, AllAddressReplies) {
    IsolatedWorkspace workspace;
    const std::string seeded = "old/main=1,old/h265=2";
    struct Case {
        QByteArray reply;
        int result;
        std::string lines, h265, known, message, fms;
    };
    const Case cases[] = {
        // Entries that are not objects leave the tail of the array empty but still count.
        {ok(R"({"fms_val":"f1","list":[{"17":"u1"},5,{"3":"u2"},{}]})"), 0, "u1#17,u2#3,#0,#0",
         "unset", "old/h265=2,u1=17,u2=3", "", "f1"},
        {ok(R"({"list":[{"17":"u1"}],"list_sort":[{"id":4,"url":"u2"},{"id":"5","url":"u3"}]})"), 0,
         "u2#4,u3#5", "unset", "old/h265=2,u2=4,u3=5", "", ""},
        {ok(R"({"list":[{"17":"u1"}],"list_sort":[]})"), 1, "u1#17", "unset", "old/h265=2,u1=17",
         kDataError, ""},
        {ok(R"({"list_sort":[]})"), 1, "unset", "unset", seeded, kDataError, ""},
        {ok(R"({"list":[],"list_sort":[{"id":4,"url":"u2"}]})"), 1, "unset", "unset", seeded,
         kDataError, ""},
        {ok(R"({"h265_list_sort":[{"id":9,"url":"h1"}]})"), 0, "unset", "h1#9", "old/main=1,h1=9",
         "", ""},
        {ok(R"({"h265_list_sort":[],"list_sort":[{"id":4,"url":"u2"}]})"), 0, "u2#4", "", "u2=4",
         "", ""},
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
    EXPECT_TRUE(log.contains("list_sort num:0 error:" + ok(R"({"list_sort":[]})")));
}

TEST(PushLinesParse, SingleAddressReplies) {
    IsolatedWorkspace workspace;
    struct Case {
        QByteArray reply;
        int result;
        std::string url;  // starts as "before"
        int32_t id;       // starts as 99
    };
    const Case cases[] = {
        {ok(R"({"rtmp_send_id":7,"rtmp_send_url":"u1","rtmp_send_live":"k?t=1"})"), 0, "u1/k?t=1",
         7},
        {ok(R"({"rtmp_send_id":"12","rtmp_send_url":"u1/","rtmp_send_live":"k"})"), 0, "u1//k", 12},
        {ok(R"({"rtmp_send_id":"-1","rtmp_send_url":"u2","rtmp_send_live":"k"})"), 0, "u2/k", -1},
        {ok(R"({"rtmp_send_id":8,"rtmp_send_url":"u1","rtmp_send_live":""})"), 1, "before", 8},
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
    IsolatedWorkspace workspace;
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
    IsolatedWorkspace workspace;
    DataParser parser;
    std::thread reader([&parser] {
        for (int32_t i = 0, id = 0; i < 200; ++i) {
            parser.findPushLine("u1", id);
        }
    });
    for (int i = 0; i < 50; ++i) {
        HandedOut().parse(parser, ok(R"({"list_sort":[{"id":3,"url":"u1"}]})"));
        if (i % 10 == 0) {
            parser.reset();
        }
    }
    reader.join();
    EXPECT_EQ(knownLines(parser), "u1=3");
}

}  // namespace
