#include "barrage/message_dispatch.h"

#include <cstring>
#include <tuple>

#include "barrage/vx_room_client.h"
#include "corvid/message_client.h"
#include "corvid/message_codes.h"
#include "corvid/message_decoder.h"
#include "log/log_writer.h"
#include "tolvane/i_room_listener.h"
#include "vxencoder/vx_encoder.h"

namespace tolvane::barrage {

namespace {
constexpr std::size_t kEncoderBufferSize = 8192;

std::string encode(const char* firstKey, const char* firstValue, const char* secondKey,
                   const char* secondValue) {
    vxEncoder encoder(kEncoderBufferSize);
    encoder.AddItem(firstKey, firstValue);
    encoder.AddItem(secondKey, secondValue);
    // The result belongs to the encoder, so it is copied before the encoder goes.
    return std::string(encoder.GetResult());
}
}  // namespace

const char* const kLoginChannelRequests[10] = {
    "noble_num_info", "noble_num_info", "fansrk", "fansswrk", "dfansrk",
    "olviplst",       "dayrk",          "weekrk", "totalrk",  "monthrk",
};

const char* const kLoginSubscriptions[8] = {
    "fansrk", "fansswrk", "dfansrk", "olviplst", "dayrk", "weekrk", "totalrk", "monthrk",
};

bool ErrorVerdict::operator==(const ErrorVerdict& other) const {
    return std::tie(report, status, reconnect, setKicked, clearLoggedIn, setStopped) ==
           std::tie(other.report, other.status, other.reconnect, other.setKicked,
                    other.clearLoggedIn, other.setStopped);
}

ErrorVerdict errorVerdict(int32_t code, bool kicked) {
    ErrorVerdict verdict;
    switch (code) {
        case 51:
        case 252:
            verdict.report = true;
            verdict.status = kRoomStatusConnectionLost;
            // A kicked client must not walk straight back in.
            verdict.reconnect = !kicked;
            break;
        case 56:
        case 365:
            verdict.report = true;
            verdict.status = kRoomStatusRejected;
            verdict.clearLoggedIn = true;
            break;
        case 59:
            verdict.report = true;
            verdict.status = kRoomStatusKicked;
            verdict.setKicked = true;
            verdict.clearLoggedIn = true;
            break;
        case 206:
        case 251:
            verdict.report = true;
            verdict.status = kRoomStatusReconnecting;
            verdict.reconnect = true;
            break;
        case 267:
            verdict.setStopped = true;
            break;
        case 60206:
        case 300060206:
            // Notices the platform sends as errors; the connection is fine.
            break;
        default:
            verdict.reconnect = true;
            break;
    }
    return verdict;
}

int32_t mapShowEndReason(int32_t serverReason) {
    switch (serverReason) {
        case 1:
            return 0;
        case 2:
        case 4:
            return 2;
        case 3:
            return 1;
        default:
            return -1;
    }
}

BarrageMessage makeBarrageMessage(int32_t typeCode, const char* rawText,
                                  const MessageHeader& header) {
    BarrageMessage message;
    fillBarrageMessage(message, typeCode, rawText, header);
    return message;
}

void fillBarrageMessage(BarrageMessage& message, int32_t typeCode, std::string_view rawText,
                        const MessageHeader& header) {
    message.typeCode = typeCode;
    message.rawText.assign(rawText.data(), rawText.size());
    message.typeName.assign(header.typeName, strnlen(header.typeName, sizeof header.typeName));
    message.headerAt12 = header.timestamp;
    message.headerAt8 = header.userId;
    message.headerAt16 = header.level;
    message.headerAt0 = header.sequence;
    message.headerAt4 = header.roomId;
    message.headerAt20 = header.itemCount;
    message.headerAt152 = header.textLength;
}

std::string channelRequestText(const char* channel) {
    return encode("type", "get", "msgtype", channel);
}

std::string subscriptionText(bool subscribe, const char* channel) {
    return encode("type", subscribe ? "sub" : "unsub", "mt", channel);
}

}  // namespace tolvane::barrage

// The client's side of received messages. Everything here runs on the message library's
// thread that delivered the message.

using tolvane::log::kMainLog;
using tolvane::log::writeLine;

namespace {
QString textOf(const char* rawText) {
    return QString::fromUtf8(rawText);
}
}  // namespace

void VxRoomClient::handleMessage(const char* rawText) {
    const tolvane::barrage::HostCallGate::Pass pass(listenerGate_);
    if (!pass) {
        return;  // logging out: the listener must hear nothing more
    }
    if (rawText == nullptr) {
        writeLine(kMainLog, QStringLiteral("[msg] Message null error."));
        return;
    }
    MessageHeader header{};
    const int32_t typeCode = decoder_->classify(rawText, &header);
    // Reused from message to message: only this thread delivers messages.
    BarrageMessage& message = received_;
    // A classified text has been measured already; only a refused one is measured again.
    const std::string_view text =
        typeCode != kMessageTypeInvalid && header.textLength < INT32_MAX
            ? std::string_view(rawText, static_cast<std::size_t>(header.textLength))
            : std::string_view(rawText);
    tolvane::barrage::fillBarrageMessage(message, typeCode, text, header);
    switch (typeCode) {
        case kMessageTypeLoginReply:
            kicked_ = false;
            handleLoginReply(rawText);
            latest_.record(message.typeName, message.rawText);
            break;
        case kMessageTypeShowEnd:
            handleShowEnd(rawText);
            break;
        case kMessageTypeKeepAlive: {
            KeepAliveRecord record{};
            if (decoder_->decodeKeepAlive(rawText, &record)) {
                if (listener_ != nullptr) {
                    listener_->onKeepAliveSecond(record.hot);
                    listener_->onKeepAliveFirst(record.online);
                }
            } else {
                writeLine(
                    kMainLog,
                    QStringLiteral("[msg] decodeKeepliveMessage:%1 failed.").arg(textOf(rawText)));
            }
            break;
        }
        case kMessageTypeMemberInfoReply: {
            MemberInfoRecord record{};
            if (decoder_->decodeMemberInfoReply(rawText, &record)) {
                if (listener_ != nullptr) {
                    listener_->onMemberInfoValue(record.memberCount);
                }
            } else {
                writeLine(kMainLog, QStringLiteral("[msg] decodeMemberinfoResMessage:%1 failed.")
                                        .arg(textOf(rawText)));
            }
            break;
        }
        case kMessageTypeError:
            handleErrorMessage(rawText);
            break;
        case kMessageTypeNoticeValue: {
            NoticeValueRecord record{};
            // A notice without its number still reports, as zero.
            decoder_->decodeNoticeValue(rawText, &record);
            if (listener_ != nullptr) {
                listener_->onNoticeValue(record.value);
            }
            latest_.record(message.typeName, message.rawText);
            break;
        }
        default:
            if (std::string_view(message.typeName) == std::string_view("fansrk")) {
                FansBrandRecord record{};
                if (decoder_->decodeFansBrand(rawText, &record)) {
                    if (listener_ != nullptr) {
                        listener_->onFansBrand(record.brand);
                    }
                } else {
                    writeLine(kMainLog, QStringLiteral("[msg] decodeFansBrandMessage:%1 failed.")
                                            .arg(textOf(rawText)));
                }
            }
            latest_.record(message.typeName, message.rawText);
            break;
    }
    if (listener_ != nullptr) {
        listener_->onBarrageMessage(&message);
    }
    messageLog_.writeUtf8(message.rawText);
}

void VxRoomClient::handleLoginReply(const char* rawText) {
    LoginReplyRecord record{};
    if (!decoder_->decodeLoginReply(rawText, &record)) {
        writeLine(kMainLog,
                  QStringLiteral("[msg] decodeLoginResMessage:%1 failed.").arg(textOf(rawText)));
        return;
    }
    if (listener_ != nullptr) {
        listener_->onRoomStatus(tolvane::barrage::kRoomStatusLoginOk);
    }
    for (const char* channel : tolvane::barrage::kLoginChannelRequests) {
        requestChannel(channel);
    }
    for (const char* channel : tolvane::barrage::kLoginSubscriptions) {
        subscribe(true, channel);
    }
    writeLine(kMainLog, QStringLiteral("[msg] login ok."));
}

void VxRoomClient::handleErrorMessage(const char* rawText) {
    int32_t code = 0;
    if (!decoder_->decodeError(rawText, &code)) {
        writeLine(kMainLog,
                  QStringLiteral("[msg] decodeErrorMessage:%1 failed.").arg(textOf(rawText)));
        return;
    }
    const tolvane::barrage::ErrorVerdict verdict = tolvane::barrage::errorVerdict(code, kicked_);
    if (verdict.report && listener_ != nullptr) {
        listener_->onRoomStatus(verdict.status);
    }
    if (verdict.setKicked) {
        kicked_ = true;
    }
    if (verdict.clearLoggedIn) {
        loggedIn_ = false;
    }
    if (verdict.setStopped) {
        stopped_ = true;
    }
    if (verdict.reconnect) {
        Q_EMIT errorReceived();
    }
    writeLine(kMainLog, QStringLiteral("[msg] error:%1.").arg(code));
}

int32_t VxRoomClient::handleShowEnd(const char* rawText) {
    int32_t reason = 0;
    double banHours = 0.0;
    if (!decoder_->decodeShowEnd(rawText, &reason, &banHours)) {
        writeLine(kMainLog,
                  QStringLiteral("[msg] decodeShowendMessage:%1 failed.").arg(textOf(rawText)));
        return -1;
    }
    const int32_t mapped = tolvane::barrage::mapShowEndReason(reason);
    if (mapped < 0) {
        return -1;
    }
    if (listener_ != nullptr) {
        // The decoder keeps the hours within the 32-bit range, so truncation is defined.
        listener_->onShowEnd(mapped, static_cast<int32_t>(banHours));
    }
    writeLine(
        kMainLog,
        QStringLiteral("[msg] Show End reason:%1 banour:%2.").arg(reason).arg(banHours, 0, 'g'));
    return 0;
}

int32_t VxRoomClient::requestChannel(const char* channel) {
    const std::string text = tolvane::barrage::channelRequestText(channel);
    if (text.empty() || client_ == nullptr) {
        return -1;
    }
    const QString message = QString::fromStdString(text);
    writeMessageLog(QStringLiteral("[sendRawMessage]: %1").arg(message));
    client_->sendRawMessage(reinterpret_cast<const char16_t*>(message.utf16()));
    return 0;
}

void VxRoomClient::subscribe(bool subscribe, const char* channel) {
    const std::string text = tolvane::barrage::subscriptionText(subscribe, channel);
    if (text.empty() || client_ == nullptr) {
        return;
    }
    const QString message = QString::fromStdString(text);
    client_->sendSubscription(reinterpret_cast<const char16_t*>(message.utf16()));
}

void VxRoomClient::latestWatchedMessages(std::vector<std::string>& out) {
    latest_.latest(out);
}
