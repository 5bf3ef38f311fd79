#include "parse/data_parser.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include "parse/reply_texts.h"
#include "support/log_reader.h"
#include "support/replies.h"
#include "support/scoped_env.h"
#include "tolvane/result_codes.h"

namespace {

using Lines = std::vector<std::string>;

// Runs `action` in a fresh log folder and returns the lines it wrote to the main log.
Lines loggedBy(const std::function<void()>& action) {
    IsolatedWorkspace workspace;
    action();
    Lines lines;
    for (const QString& line : readLogMessages(tolvane::log::kMainLog)) {
        lines.push_back(line.toStdString());
    }
    return lines;
}

std::string missing(const std::string& key) {
    return "parse data failed! json has not key: '" + key + "'";
}

TEST(DataParserEnvelope, CodesMessagesAndLogLines) {
    const std::string noMessage = tolvane::kReplyNoMessageText;
    struct Case {
        const char* body;
        int code;
        std::string message;
        Lines leadingLines;  // written before "errorCode" and "srcData"
    };
    // clang-format off
    const Case cases[] = {
        {R"({"error":0})", 0, "", {}},
        {R"({"error":"0","data":"x"})", tolvane::kResultReplyCodeNotNumber, "x", {}},
        {R"({"error":1.5,"data":"m"})", tolvane::kResultReplyNotJson, "m", {}},
        {R"({"error":1e2,"data":"m"})", 100, "m", {}},
        {R"({"error":99999999999,"data":"big"})", -1000, "big", {}},
        {R"({"error":-2147483648,"data":"min"})", -2147483647 - 1, "min", {}},
        {R"({"error":603,"data":"坏"})", 603, u8"坏", {}},
        {R"({"error":603,"data":""})", 603, noMessage, {}},
        {R"({"error":603})", 603, noMessage, {missing("data")}},
        {R"({"error":603,"data":{"x":1}})", 603, noMessage,
         {"parse data failed! 'data' value is not String"}},
        {R"({"error":7,"data":123})", 7, "123", {}},
        {"<html><body>502 Bad Gateway</body></html>", -1000, noMessage, {missing("data")}},
        {"[1,2]", tolvane::kResultReplyNotObject, noMessage, {missing("data")}},
        {R"({"data":"no code"})", tolvane::kResultReplyWithoutCode, "no code", {}},
    };
    // clang-format on
    for (const Case& c : cases) {
        DataParser parser;
        QJsonObject root;
        int code = 1;
        const Lines lines =
            loggedBy([&] { code = parser.parseReplyEnvelope(c.body, root, "error", "data"); });
        EXPECT_EQ(code, c.code) << c.body;
        EXPECT_EQ(parser.lastErrorMessage(), c.message) << c.body;
        EXPECT_FALSE(root.contains("error")) << c.body;
        Lines expected = c.leadingLines;
        if (c.code != 0) {
            expected.push_back("parse data failed! errorCode:" + std::to_string(c.code));
            expected.push_back(std::string("srcData: ") + c.body);
        }
        EXPECT_EQ(lines, expected) << c.body;
    }
    // Whatever a hostile server sends that no JSON reader takes is one refusal, never a crash.
    const QByteArray deep = QByteArray(100000, '[') + QByteArray(100000, ']');
    for (const QByteArray& data :
         {QByteArray("\"a\xff\xfe\xc3(\""), QByteArray("\"\xc0\xaf\""), deep}) {
        DataParser parser;
        QJsonObject root;
        EXPECT_EQ(parser.parseReplyEnvelope(okReply(data), root, "error", "data"),
                  tolvane::kResultReplyNotJson);
    }
}

TEST(DataParserEnvelope, KeysAreArgumentsAndRootKeepsThePayload) {
    DataParser parser;
    QJsonObject root;
    const QByteArray body = R"({"result":5,"msg":"from msg","data":"from data"})";
    EXPECT_EQ(parser.parseReplyEnvelope(body, root, "result", "msg"), 5);
    EXPECT_EQ(parser.lastErrorMessage(), "from msg");
    EXPECT_EQ(root.keys(), QStringList({"data", "msg"}));

    // A success clears the message of the failure before it and leaves the payload readable.
    EXPECT_EQ(parser.parseReplyEnvelope(R"({"error":0,"data":{"n":3}})", root, "error", "data"), 0);
    EXPECT_EQ(parser.lastErrorMessage(), "");
    EXPECT_EQ(root.value("data").toObject().value("n").toInt(), 3);
}

// Unknown codes pass unchanged with a log line; the table reads through the published names.
TEST(DataParserMapping, TableRowsAndUnknownCodes) {
    using namespace tolvane;
    // clang-format off
    const std::pair<int, int> known[] = {
        {603, kResultLoginRefused},         {101, kResultPlatform101},  {102, kResultPlatform102},
        {604, kResultLiveRefused},          {608, kResultLiveRefused},  {605, kResultPlatform605},
        {606, kResultSessionExpired},       {607, kResultSessionEnded}, {10, kResultPlatform10},
        {613, kResultQrCodeInvalid},        {609, kResultWrongSmsCode}, {612, kResultPlatform612},
        {9, kResultVerificationNeeded},     {618, kResultPlatform618},  {0, kResultOk},
        {120012, kResultLongTokenExpired},  {130014, kResultRemoteLoginNeeded},
        {130018, kResultQrCodeWaiting},     {-5, -5}, {-1, -1}, {1, 1}, {81, 81}, {201, 201},
        {210, 210}, {224, 224}, {233, 233},
    };
    // clang-format on
    for (const auto& [server, host] : known) {
        int mapped = 0;
        EXPECT_EQ(loggedBy([&] { mapped = DataParser::mapServerErrorCode(server); }), Lines());
        EXPECT_EQ(mapped, host) << server;
    }
    for (const int unknown : {700, 200, 234, -6, -1000, -1003}) {
        int mapped = 0;
        EXPECT_EQ(loggedBy([&] { mapped = DataParser::mapServerErrorCode(unknown); }),
                  Lines{"unknown error:" + std::to_string(unknown)});
        EXPECT_EQ(mapped, unknown);
    }
}

// One value under the key "k" (or none) read by every reader.
struct ReaderCase {
    const char* value;       // JSON text of the value; nullptr = the key is absent
    QString asString;        // default "7"
    int asInt;               // default 7
    double asDouble;         // default 7.5
    const char* typeLogged;  // types whose readers log a mismatch: S, I (int), D, O, A
};

TEST(DataParserReaders, EveryReaderOverEveryKindOfValue) {
    const ReaderCase cases[] = {
        {"12345", "12345", 12345, 12345, "OA"},
        {"1.5", "7", 7, 1.5, "OA"},
        {R"("42")", "42", 42, 42, "OA"},
        {R"("2.5")", "2.5", 0, 2.5, "OA"},
        {R"("abc")", "abc", 0, 0, "OA"},
        {R"("")", "", 0, 0, "OA"},
        {R"("99999999999")", "99999999999", 0, 99999999999.0, "OA"},
        {"true", "7", 7, 7.5, "SIDOA"},
        {"[1]", "7", 7, 7.5, "SIDO"},
        {R"({"a":1})", "7", 7, 7.5, "SIDA"},
        {nullptr, "7", 7, 7.5, ""},
    };
    const QJsonObject sentinel = replyObject(R"({"untouched":true})");
    for (const ReaderCase& c : cases) {
        const std::string label = c.value ? c.value : "(absent)";
        const QJsonObject object =
            c.value ? replyObject((std::string(R"({"k":)") + c.value + "}").c_str())
                    : QJsonObject();
        const bool isObject = c.value && object.value("k").isObject();
        const bool isArray = c.value && object.value("k").isArray();
        QJsonObject outObject = sentinel;
        QJsonArray outArray = {"untouched"};
        const Lines lines = loggedBy([&] {
            EXPECT_EQ(DataParser::readString(object, "k", "7"), c.asString) << label;
            EXPECT_EQ(DataParser::readInt(object, "k", 7), c.asInt) << label;
            EXPECT_DOUBLE_EQ(DataParser::readDouble(object, "k", 7.5), c.asDouble) << label;
            EXPECT_EQ(DataParser::readObject(object, "k", outObject), isObject) << label;
            EXPECT_EQ(DataParser::readArray(object, "k", outArray), isArray) << label;
        });
        EXPECT_EQ(outObject, isObject ? object.value("k").toObject() : sentinel) << label;
        EXPECT_EQ(outArray, isArray ? object.value("k").toArray() : QJsonArray{"untouched"})
            << label;

        Lines expected;
        const std::string types = c.typeLogged;
        const std::pair<char, const char*> names[] = {
            {'S', "String"}, {'I', "Double"}, {'D', "Double"}, {'O', "Object"}, {'A', "Array"}};
        for (const auto& [letter, name] : names) {
            if (!c.value) {
                expected.push_back(missing("k"));
            } else if (types.find(letter) != std::string::npos) {
                expected.push_back(std::string("parse data failed! 'k' value is not ") + name);
            }
        }
        EXPECT_EQ(lines, expected) << label;
    }
}

TEST(DataParserConfigCallback, Unwrap) {
    struct Case {
        const char* body;
        const char* unwrapped;
        bool logged;
    };
    const Case cases[] = {
        {R"(VXConfigCallback({"data":{}}))", R"({"data":{}})", false},
        {"VXConfigCallback({\"a\":\"(x)\"});\n", "{\"a\":\"(x)\"}", false},
        {"f()", "", false},
        {R"(VXConfigCallback({"data":{}})", "", true},
        {"{\"data\":{}}", "", true},
        {")(", "", true},
        {"", "", true},
    };
    for (const Case& c : cases) {
        QByteArray result;
        const Lines lines = loggedBy([&] { result = DataParser::unwrapConfigCallback(c.body); });
        EXPECT_EQ(result.toStdString(), c.unwrapped) << c.body;
        const Lines expected =
            c.logged ? Lines{"VXConfigCallback({}) data error!", c.body} : Lines{};
        EXPECT_EQ(lines, expected) << c.body;
    }
}

TEST(DataParserCodeResult, ThreeForms) {
    DataParser parser;
    EXPECT_EQ(parser.parseCodeResult(R"({"error":0})"), 0);
    EXPECT_EQ(parser.parseCodeResult(R"({"error":603,"data":"slow down"})"), 214);
    EXPECT_EQ(parser.lastErrorMessage(), "slow down");
    EXPECT_EQ(parser.parseCodeResult(R"({"result":101,"data":"m","error":0})", "result", "data"),
              215);
    EXPECT_EQ(parser.parseCodeResult(R"({"error":5,"result":0})", "result", "data"), 0);
    EXPECT_EQ(parser.parseCodeResult(R"({"error":0,"msg":""})", "result", "msg"), -1002);
    EXPECT_EQ(DataParser::parseCodeResult(130014), 228);

    const char* body = R"({"error":"0","data":"x"})";
    const Lines lines = loggedBy([&] { EXPECT_EQ(parser.parseCodeResult(body), -1003); });
    EXPECT_EQ(lines, Lines({"call function: DataParser::parseCodeResult -----------------",
                            "parse data failed! errorCode:-1003", std::string("srcData: ") + body,
                            "unknown error:-1003"}));
}

TEST(DataParserIntValue, Cases) {
    struct Case {
        const char* body;
        int result;
        int out;      // starts as -7
        Lines lines;  // after the banner
    };
    // clang-format off
    const Case cases[] = {
        {R"({"error":0,"data":{"count":12}})", 0, 12, {}},
        {R"({"error":0,"data":{"count":"12"}})", 0, 12, {}},
        {R"({"error":0,"data":{}})", 0, 0, {missing("count")}},
        {R"({"error":0,"data":[1]})", 1, -7, {"parse data failed! 'data' value is not Object"}},
        {R"({"error":603,"data":"x"})", 214, -7,
         {"parse data failed! errorCode:603", R"(srcData: {"error":603,"data":"x"})"}},
        {R"({"error":0})", 1, -7, {missing("data")}},
    };
    // clang-format on
    for (const Case& c : cases) {
        DataParser parser;
        int out = -7;
        int result = -1;
        const Lines lines = loggedBy([&] { result = parser.parseIntValue(c.body, "count", out); });
        EXPECT_EQ(result, c.result) << c.body;
        EXPECT_EQ(out, c.out) << c.body;
        Lines expected = {"call function: DataParser::parseIntValue -----------------"};
        expected.insert(expected.end(), c.lines.begin(), c.lines.end());
        EXPECT_EQ(lines, expected) << c.body;
    }
}

}  // namespace
