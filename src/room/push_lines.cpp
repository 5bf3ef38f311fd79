// Push lines: the RTMP addresses a broadcast may use and the tables that name their line ids.
#include <QJsonArray>
#include <QJsonObject>

#include "log/log_writer.h"
#include "parse/data_parser.h"
#include "parse/reply_texts.h"
#include "service/vx_net_service_imp.h"

namespace {

// A refusal to hand out lines; its payload says why, from when and for how long.
constexpr int kPushLinesRefusedCode = 608;
// A refusal whose payload points the anchor at a page to read first.
constexpr int kPushLinesReferredCode = 9;

// A "list" entry is an object whose one key is the line id and whose value is the URL.
bool pushLineFromIdKeyedEntry(const QJsonValue& entry, PushAddress& line) {
    const QJsonObject object = entry.toObject();
    if (object.isEmpty()) {
        return false;
    }
    const QString id = object.constBegin().key();
    line.url = DataParser::readString(object, id, QString()).toStdString();
    line.id = id.toInt(nullptr, 10);
    return true;
}

// A "list_sort" or "h265_list_sort" entry names its id and URL.
bool pushLineFromSortedEntry(const QJsonValue& entry, PushAddress& line) {
    if (!entry.isObject()) {
        return false;
    }
    const QJsonObject object = entry.toObject();
    line.id = DataParser::readInt(object, QStringLiteral("id"), 0);
    line.url = DataParser::readString(object, QStringLiteral("url"), QString()).toStdString();
    return true;
}

// Replaces `table` with the entries' lines and hands them out as a new array of the list's size,
// filled from the front. An empty list still gets its array of size 0, so that a host that
// reuses its variables never keeps (and frees again) the array of an earlier call.
void handOutPushLines(const QJsonArray& entries, bool (*readLine)(const QJsonValue&, PushAddress&),
                      std::mutex& mutex, std::map<std::string, int32_t>& table, PushAddress*& lines,
                      int32_t& count) {
    auto* filled = new PushAddress[entries.size()];
    int filledCount = 0;
    for (const QJsonValue& entry : entries) {
        if (readLine(entry, filled[filledCount])) {
            ++filledCount;
        }
    }
    lines = filled;
    count = entries.size();
    const std::lock_guard<std::mutex> lock(mutex);
    table.clear();
    for (int i = 0; i < filledCount; ++i) {
        table.insert_or_assign(filled[i].url, filled[i].id);
    }
}

}  // namespace

int DataParser::parseRtmpResult(const QByteArray& bytes, std::string& pushUrl, int32_t& lineId) {
    QJsonObject data;
    if (const int result = parseDataObject("parseRtmpResult", bytes, data, nullptr); result != 0) {
        return result;
    }
    const QString idKey = QStringLiteral("rtmp_send_id");
    lineId = readInt(data, idKey, -1);
    if (lineId == -1) {
        lineId = readString(data, idKey, QStringLiteral("-1")).toInt(nullptr, 10);
    }
    const QString url = readString(data, QStringLiteral("rtmp_send_url"), QString());
    const QString stream = readString(data, QStringLiteral("rtmp_send_live"), QString());
    if (url.isEmpty() || stream.isEmpty()) {
        return 1;
    }
    // One slash even after a base that ends in one: the line tables key on this exact text.
    pushUrl = url.toStdString() + '/' + stream.toStdString();
    const std::lock_guard<std::mutex> lock(pushLinesMutex_);
    state_.pushLines.insert_or_assign(pushUrl, lineId);
    return 0;
}

int DataParser::parseAllRtmpAddressResult(const QByteArray& bytes, PushAddress*& addresses,
                                          int32_t& count, PushAddress*& h265Addresses,
                                          int32_t& h265Count) {
    QJsonObject root;
    QJsonObject data;
    const int code =
        parseReplyData("parseAllRtmpAddressResult", bytes, QStringLiteral("data"), root, data);
    if (code == kPushLinesRefusedCode) {
        QJsonObject refusal;
        if (readObject(root, QStringLiteral("data"), refusal)) {
            const QString reason = readString(refusal, QStringLiteral("reason"), QString());
            const QString openTime = readString(refusal, QStringLiteral("open_time"), QString());
            const double duration = readDouble(refusal, QStringLiteral("duration"), 0);
            // Read only so that a missing message shows in the log; the host shows the three
            // texts of the refusal instead.
            readString(root, QStringLiteral("msg"), QString());
            // The host tells these texts from push lines by the result code.
            addresses = new PushAddress[3];
            count = 3;
            addresses[0].url = reason.toStdString();
            addresses[1].url = openTime.toStdString();
            addresses[2].url = QString::number(duration, 'g', 6).toStdString();
        }
        return mapServerErrorCode(code);
    }
    if (code == kPushLinesReferredCode) {
        QJsonObject referral;
        if (!readObject(root, QStringLiteral("data"), referral)) {
            state_.lastErrorMessage = tolvane::kReplyDataErrorText;
            return 1;
        }
        state_.lastErrorMessage =
            readString(referral, QStringLiteral("msg"), QString()).toStdString();
        state_.referenceUrl =
            readString(referral, QStringLiteral("ref_url"), QString()).toStdString();
        return mapServerErrorCode(code);
    }
    if (code != 0) {
        return mapServerErrorCode(code);
    }

    state_.fmsValue = readString(data, QStringLiteral("fms_val"), QString()).toStdString();
    // The lists are optional, but one that is present and empty is a broken reply, so presence
    // is tested before reading.
    const QString idKeyedList = QStringLiteral("list");
    const QString sortedList = QStringLiteral("list_sort");
    if (data.contains(idKeyedList)) {
        QJsonArray entries;
        readArray(data, idKeyedList, entries);
        if (entries.isEmpty()) {
            state_.lastErrorMessage = tolvane::kReplyDataErrorText;
            return 1;
        }
        // A usable sorted list supersedes this one; handing this one out first would leave an
        // array that the host never sees and so can never free.
        if (data.value(sortedList).toArray().isEmpty()) {
            handOutPushLines(entries, &pushLineFromIdKeyedEntry, pushLinesMutex_, state_.pushLines,
                             addresses, count);
        }
    }
    if (data.contains(sortedList)) {
        QJsonArray entries;
        readArray(data, sortedList, entries);
        if (entries.isEmpty()) {
            state_.lastErrorMessage = tolvane::kReplyDataErrorText;
            tolvane::log::writeLine(tolvane::log::kMainLog,
                                    QStringLiteral("list_sort num:%1 error:").arg(entries.size()) +
                                        QString::fromUtf8(bytes));
            return 1;
        }
        handOutPushLines(entries, &pushLineFromSortedEntry, pushLinesMutex_, state_.pushLines,
                         addresses, count);
    }
    const QString h265List = QStringLiteral("h265_list_sort");
    if (data.contains(h265List)) {
        QJsonArray entries;
        readArray(data, h265List, entries);
        handOutPushLines(entries, &pushLineFromSortedEntry, pushLinesMutex_, state_.h265PushLines,
                         h265Addresses, h265Count);
    }
    return 0;
}

bool DataParser::findPushLine(const std::string& url, int32_t& lineId) const {
    const std::lock_guard<std::mutex> lock(pushLinesMutex_);
    for (const PushLineTable* table : {&state_.pushLines, &state_.h265PushLines}) {
        const auto line = table->find(url);
        if (line != table->end()) {
            lineId = line->second;
            return true;
        }
    }
    return false;
}

std::string DataParser::fmsValue() const {
    return state_.fmsValue;
}

std::string DataParser::referenceUrl() const {
    return state_.referenceUrl;
}

namespace {

using tolvane::net::BaseKind;
using tolvane::net::CommonPlacement;
using tolvane::net::FailureLog;
using tolvane::net::HttpMethod;
using tolvane::net::registerOperation;

// The mobile service takes aid, client_sys and time as headers and the rest as the form.
const tolvane::net::OperationRow& kAllRtmpAddresses =
    registerOperation(baseRow("get_all_rtmp_addresses", HttpMethod::Post, BaseKind::Mobile3,
                              "mgapi/livenc/anchor/getRtMpList")
                          .commonIn(CommonPlacement::Headers)
                          .withClientSys()
                          .withExpiryHook()
                          .logging(FailureLog::PathAndReply));

}  // namespace

// slot 3
int32_t VxNetServiceImp::get_rtmp_address(std::string& pushUrl, int32_t& lineId) {
    logBanner("get_rtmp_address");
    return requestRoomInfo(
        [&](const QByteArray& reply) {
            pushUrl.clear();
            return parser_.parseRtmpResult(reply, pushUrl, lineId);
        },
        true);
}

// slot 12
int32_t VxNetServiceImp::get_all_rtmp_addresses(PushAddress*& addresses, int32_t& count,
                                                PushAddress*& h265Addresses, int32_t& h265Count) {
    ParamList items{{QStringLiteral("token"), QString::fromStdString(sessionToken())}};
    appendLiveCategory(items);
    // The parser fills these only for the lists the reply holds; the host's values stay
    // untouched for the others.
    PushAddress* mainLines = nullptr;
    int32_t mainCount = 0;
    PushAddress* h265Lines = nullptr;
    int32_t h265LineCount = 0;
    const int32_t result =
        runOperation(kAllRtmpAddresses, items, nullptr, [&](const QByteArray& reply) {
            return parser_.parseAllRtmpAddressResult(reply, mainLines, mainCount, h265Lines,
                                                     h265LineCount);
        });
    if (mainLines != nullptr) {
        addresses = mainLines;
        count = mainCount;
    }
    if (h265Lines != nullptr) {
        h265Addresses = h265Lines;
        h265Count = h265LineCount;
    }
    if (result == 0) {
        pushAddresses_.assign(mainLines, mainLines + (mainLines != nullptr ? mainCount : 0));
    }
    return result;
}
