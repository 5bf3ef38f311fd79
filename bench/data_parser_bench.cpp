#include <benchmark/benchmark.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <map>

#include "parse/data_parser.h"

// Envelope check and field readers over a reply of about 1 MB, against parsing the same bytes
// with QJsonDocument alone. The argument is the number of fields per entry that the parser
// does not read: 0 is the worst case (every field read), 12 a list whose entries carry more
// than the client needs, as the platform's gift and room lists do.

namespace {

QByteArray buildReply(int unreadFields) {
    QByteArray list;
    int index = 0;
    while (list.size() < 1000 * 1000) {
        if (index > 0) {
            list += ',';
        }
        list += QStringLiteral(
                    "{\"id\":%1,\"uid\":\"%2\",\"nickname\":\"主播%1号的直播间\","
                    "\"level\":\"%3\",\"price\":%4,\"online\":%5,\"is_vip\":%6,"
                    "\"avatar\":\"https://img.example.org/avatar/%2/middle.jpg?v=%1\","
                    "\"anchor_level\":{\"level\":\"%3\",\"exp\":%5},"
                    "\"tags\":[\"game\",\"music\",%3]")
                    .arg(index)
                    .arg(100000 + index * 7)
                    .arg(index % 60)
                    .arg(index * 0.25)
                    .arg(index * 13 % 100000)
                    .arg(index % 2)
                    .toUtf8();
        for (int field = 0; field < unreadFields; ++field) {
            list += ",\"extra_" + QByteArray::number(field) + "\":" +
                    (field % 2 ? QByteArray::number(index * field)
                               : "\"https://img.example.org/effect/" + QByteArray::number(index) +
                                     ".webp\"");
        }
        list += '}';
        ++index;
    }
    return "{\"error\":0,\"msg\":\"\",\"data\":{\"total\":" + QByteArray::number(index) +
           ",\"page\":1,\"list\":[" + list + "]}}";
}

const QByteArray& reply(int unreadFields) {
    static std::map<int, QByteArray> replies;
    auto it = replies.find(unreadFields);
    if (it == replies.end()) {
        it = replies.emplace(unreadFields, buildReply(unreadFields)).first;
    }
    return it->second;
}

struct Keys {
    const QString error = QStringLiteral("error"), msg = QStringLiteral("msg"),
                  data = QStringLiteral("data"), list = QStringLiteral("list"),
                  total = QStringLiteral("total"), id = QStringLiteral("id"),
                  uid = QStringLiteral("uid"), nickname = QStringLiteral("nickname"),
                  level = QStringLiteral("level"), price = QStringLiteral("price"),
                  online = QStringLiteral("online"), isVip = QStringLiteral("is_vip"),
                  avatar = QStringLiteral("avatar"), anchorLevel = QStringLiteral("anchor_level"),
                  tags = QStringLiteral("tags");
};

void BM_FromJsonAlone(benchmark::State& state) {
    const QByteArray& bytes = reply(int(state.range(0)));
    for (auto _ : state) {
        QJsonDocument document = QJsonDocument::fromJson(bytes);
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes.size());
}

void BM_EnvelopeAndReaders(benchmark::State& state) {
    const QByteArray& bytes = reply(int(state.range(0)));
    const Keys k;
    DataParser parser;
    for (auto _ : state) {
        QJsonObject root;
        int sum = parser.parseReplyEnvelope(bytes, root, k.error, k.msg);
        QJsonObject payload;
        QJsonArray entries;
        if (sum == 0 && DataParser::readObject(root, k.data, payload) &&
            DataParser::readArray(payload, k.list, entries)) {
            sum += DataParser::readInt(payload, k.total, 0);
            for (const QJsonValue& entry : entries) {
                const QJsonObject item = entry.toObject();
                sum += DataParser::readInt(item, k.id, 0);
                sum += DataParser::readString(item, k.uid, QString()).size();
                sum += DataParser::readString(item, k.nickname, QString()).size();
                sum += DataParser::readInt(item, k.level, 0);
                sum += int(DataParser::readDouble(item, k.price, 0));
                sum += DataParser::readInt(item, k.online, 0);
                sum += DataParser::readInt(item, k.isVip, 0) == 1;
                sum += DataParser::readString(item, k.avatar, QString()).size();
                QJsonObject nested;
                if (DataParser::readObject(item, k.anchorLevel, nested)) {
                    sum += DataParser::readString(nested, k.level, QStringLiteral("0")).toInt();
                }
                QJsonArray tagList;
                if (DataParser::readArray(item, k.tags, tagList)) {
                    sum += tagList.size();
                }
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes.size());
}

// The same reads through Qt's accessors without checks or logging: the floor for the readers.
void BM_QtAccessorsAlone(benchmark::State& state) {
    const QByteArray& bytes = reply(int(state.range(0)));
    const Keys k;
    for (auto _ : state) {
        QJsonObject root = QJsonDocument::fromJson(bytes).object();
        int sum = root.take(k.error).toInt();
        const QJsonObject payload = root.value(k.data).toObject();
        sum += payload.value(k.total).toInt();
        for (const QJsonValue& entry : payload.value(k.list).toArray()) {
            const QJsonObject item = entry.toObject();
            sum += item.value(k.id).toInt();
            sum += item.value(k.uid).toString().size();
            sum += item.value(k.nickname).toString().size();
            sum += item.value(k.level).toString().toInt();
            sum += int(item.value(k.price).toDouble());
            sum += item.value(k.online).toInt();
            sum += item.value(k.isVip).toInt() == 1;
            sum += item.value(k.avatar).toString().size();
            sum += item.value(k.anchorLevel).toObject().value(k.level).toString().toInt();
            sum += item.value(k.tags).toArray().size();
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * bytes.size());
}

BENCHMARK(BM_FromJsonAlone)->Arg(0)->Arg(12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EnvelopeAndReaders)->Arg(0)->Arg(12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QtAccessorsAlone)->Arg(0)->Arg(12)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
