#include "parse/data_parser.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QJsonValue>

#include "log/log_writer.h"
#include "parse/reply_texts.h"

namespace {

// Both overloads of DataParser::parseReplyData; they differ only in the payload's JSON type.
template <typename Payload>
int parseReplyDataAs(DataParser& parser, const char* parserName, const QByteArray& bytes,
                     const QString& messageKey, QJsonObject& root, Payload& data,
                     bool (*readPayload)(const QJsonObject&, const QString&, Payload&)) {
    DataParser::writeParseBanner(parserName);
    const int code = parser.parseReplyEnvelope(bytes, root, QStringLiteral("error"), messageKey);
    if (code != 0) {
        return code;
    }
    if (!readPayload(root, QStringLiteral("data"), data)) {
        parser.setLastErrorMessage(tolvane::kReplyDataErrorText);
        return 1;
    }
    return 0;
}

void logLine(const QString& message) {
    tolvane::log::writeLine(tolvane::log::kMainLog, message);
}

void logMissingKey(const QString& key) {
    logLine(QStringLiteral("parse data failed! json has not key: '%1'").arg(key));
}

void logWrongType(const QString& key, QLatin1String typeName) {
    logLine(QStringLiteral("parse data failed! '%1' value is not %2").arg(key, typeName));
}

}  // namespace

DataParser::DataParser(QObject* parent) : QObject(parent) {}

DataParser::~DataParser() = default;

void DataParser::reset() {
    // The push-line tables are part of the state and are only touched under their lock.
    const std::lock_guard<std::mutex> lock(pushLinesMutex_);
    state_ = State{};
}

int DataParser::parseReplyEnvelope(const QByteArray& bytes, QJsonObject& root,
                                   const QString& codeKey, const QString& messageKey) {
    state_.lastErrorMessage.clear();
    root = QJsonObject();

    int code = 0;
    {
        QJsonParseError parseError{};
        const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
        if (parseError.error != QJsonParseError::NoError) {
            code = kReplyNotJson;
        } else if (!document.isObject()) {
            code = kReplyNotObject;
        } else {
            root = document.object();
        }
    }
    // The document is gone here, so taking the code out of root does not copy the reply.
    if (code == 0) {
        const QJsonValue value = root.take(codeKey);
        if (value.isUndefined()) {
            code = kReplyWithoutCode;
        } else {
            code = value.isDouble() ? value.toInt(kReplyNotJson) : kReplyCodeNotNumber;
        }
    }
    if (code == 0) {
        return 0;
    }

    state_.lastErrorMessage = readString(root, messageKey, QString()).toStdString();
    if (state_.lastErrorMessage.empty()) {
        state_.lastErrorMessage = tolvane::kReplyNoMessageText;
    }
    logLine(QStringLiteral("parse data failed! errorCode:%1").arg(code));
    logLine(QStringLiteral("srcData: %1").arg(QString::fromUtf8(bytes)));
    return code;
}

// A server code 210 passes unchanged and then reads like the host's own "no answer" 210;
// the host cannot tell them apart, and the table keeps it that way on purpose.
int DataParser::mapServerErrorCode(int serverCode) {
    switch (serverCode) {
        case 603:
            return 214;
        case 101:
            return 215;
        case 102:
            return 216;
        case 604:
        case 608:
            return 217;
        case 605:
            return 218;
        case 606:
            return 220;
        case 607:
            return 221;
        case 10:
            return 222;
        case 613:
            return 225;
        case 609:
            return 226;
        case 612:
            return 219;
        case 9:
            return 223;
        case 120012:
            return 227;
        case 130014:
            return 228;
        case -5:
        case -4:
        case -3:
        case -2:
        case -1:
        case 0:
        case 1:
        case 81:
            return serverCode;
        case 618:
            return 232;
        case 130018:
            return 233;
        default:
            break;
    }
    // Codes that are already the host's pass again unchanged, so mapping twice is harmless.
    if (serverCode >= 201 && serverCode <= 233) {
        return serverCode;
    }
    logLine(QStringLiteral("unknown error:%1").arg(serverCode));
    return serverCode;
}

QString DataParser::readString(const QJsonObject& object, const QString& key,
                               const QString& defaultValue) {
    const QJsonValue value = object.value(key);
    if (value.isUndefined()) {
        logMissingKey(key);
        return defaultValue;
    }
    switch (value.type()) {
        case QJsonValue::String:
            return value.toString();
        case QJsonValue::Double:
            return QString::number(value.toInt(defaultValue.toInt()));
        default:
            logWrongType(key, QLatin1String("String"));
            return defaultValue;
    }
}

int DataParser::readInt(const QJsonObject& object, const QString& key, int defaultValue) {
    const QJsonValue value = object.value(key);
    if (value.isUndefined()) {
        logMissingKey(key);
        return defaultValue;
    }
    switch (value.type()) {
        case QJsonValue::Double:
            return value.toInt(defaultValue);
        case QJsonValue::String:
            return value.toString().toInt(nullptr, 10);
        default:
            logWrongType(key, QLatin1String("Double"));
            return defaultValue;
    }
}

double DataParser::readDouble(const QJsonObject& object, const QString& key, double defaultValue) {
    const QJsonValue value = object.value(key);
    if (value.isUndefined()) {
        logMissingKey(key);
        return defaultValue;
    }
    switch (value.type()) {
        case QJsonValue::Double:
            return value.toDouble();
        case QJsonValue::String:
            return value.toString().toDouble();
        default:
            logWrongType(key, QLatin1String("Double"));
            return defaultValue;
    }
}

namespace {

// readObject and readArray differ only in the JSON type they accept.
template <typename Container>
bool readContainer(const QJsonObject& object, const QString& key, Container& out,
                   bool (QJsonValue::*hasType)() const, Container (QJsonValue::*convert)() const,
                   const char* typeName) {
    const QJsonValue value = object.value(key);
    if (value.isUndefined()) {
        logMissingKey(key);
        return false;
    }
    if (!(value.*hasType)()) {
        logWrongType(key, QLatin1String(typeName));
        return false;
    }
    out = (value.*convert)();
    return true;
}

}  // namespace

bool DataParser::readObject(const QJsonObject& object, const QString& key, QJsonObject& out) {
    return readContainer(object, key, out, &QJsonValue::isObject, &QJsonValue::toObject, "Object");
}

bool DataParser::readArray(const QJsonObject& object, const QString& key, QJsonArray& out) {
    return readContainer(object, key, out, &QJsonValue::isArray, &QJsonValue::toArray, "Array");
}

QByteArray DataParser::unwrapConfigCallback(const QByteArray& bytes) {
    const int open = bytes.indexOf('(');
    const int close = bytes.lastIndexOf(')');
    if (open < 0 || close < open) {
        logLine(QStringLiteral("VXConfigCallback({}) data error!"));
        logLine(QString::fromUtf8(bytes));
        return QByteArray();
    }
    return bytes.mid(open + 1, close - open - 1);
}

int DataParser::parseConfigReply(const char* parserName, const QByteArray& bytes,
                                 QJsonObject& data) {
    writeParseBanner(parserName);
    const QByteArray unwrapped = unwrapConfigCallback(bytes);
    if (unwrapped.isEmpty()) {
        return 1;
    }
    const QJsonObject root = QJsonDocument::fromJson(unwrapped).object();
    const QJsonValue payload = root.value(QStringLiteral("data"));
    if (!payload.isObject()) {
        logLine(QStringLiteral("parse data failed!"));
        // The whole reply as it came, so the log shows what the wrapper looked like too.
        logLine(QStringLiteral("srcData: %1").arg(QString::fromUtf8(bytes)));
        return 1;
    }
    data = payload.toObject();
    return 0;
}

int DataParser::parseCodeResult(const QByteArray& bytes) {
    return parseCodeResult(bytes, QStringLiteral("error"), QStringLiteral("data"));
}

int DataParser::parseCodeResult(const QByteArray& bytes, const QString& codeKey,
                                const QString& messageKey) {
    writeParseBanner("parseCodeResult");
    QJsonObject root;
    const int code = parseReplyEnvelope(bytes, root, codeKey, messageKey);
    return code == 0 ? 0 : mapServerErrorCode(code);
}

int DataParser::parseCodeResult(int code) {
    return code == 0 ? 0 : mapServerErrorCode(code);
}

int DataParser::parseIntValue(const QByteArray& bytes, const QString& key, int& out) {
    QJsonObject data;
    const int result = parseDataObject("parseIntValue", bytes, data, nullptr);
    if (result == 0) {
        out = readInt(data, key, 0);
    }
    return result;
}

int DataParser::parseReplyData(const char* parserName, const QByteArray& bytes,
                               const QString& messageKey, QJsonObject& root, QJsonObject& data) {
    return parseReplyDataAs(*this, parserName, bytes, messageKey, root, data, &readObject);
}

int DataParser::parseReplyData(const char* parserName, const QByteArray& bytes,
                               const QString& messageKey, QJsonObject& root, QJsonArray& data) {
    return parseReplyDataAs(*this, parserName, bytes, messageKey, root, data, &readArray);
}

int DataParser::parseDataObject(const char* parserName, const QByteArray& bytes, QJsonObject& data,
                                std::string* errorMessage) {
    writeParseBanner(parserName);
    QJsonObject root;
    const int code =
        parseReplyEnvelope(bytes, root, QStringLiteral("error"), QStringLiteral("data"));
    if (code != 0) {
        if (errorMessage != nullptr) {
            *errorMessage = lastErrorMessage();
        }
        return mapServerErrorCode(code);
    }
    if (!readObject(root, QStringLiteral("data"), data)) {
        (errorMessage != nullptr ? *errorMessage : state_.lastErrorMessage) =
            tolvane::kReplyDataErrorText;
        return 1;
    }
    return 0;
}

void DataParser::writeParseBanner(const char* functionName) {
    tolvane::log::writeBanner(QStringLiteral("DataParser::") + QLatin1String(functionName));
}
