// `tolvane-host call` entries for the barrage connection: sending on it, nudging it, and the
// values it last reported. Chain them after startBarrage to use a live connection.
#include <QJsonArray>

#include "call_arguments.h"

namespace host_calls {

namespace {

// The sending slots take a C string; an absent argument is sent as a null pointer, which the
// module must refuse rather than crash on.
const char* textOrNull(const QStringList& args, const std::string& value) {
    return args.isEmpty() ? nullptr : value.c_str();
}

}  // namespace

void addBarrageCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("sendBarrageText", "TEXT", [](S& s, A a) {
        const std::string value = arg(a, 0);
        return resultOnly(s.sendBarrageText(textOrNull(a, value)));
    });
    add("sendChatMessage", "TEXT", [](S& s, A a) {
        const std::string value = arg(a, 0);
        return resultOnly(s.sendChatMessage(textOrNull(a, value)));
    });
    add("sendRawMessage", "TEXT", [](S& s, A a) {
        const std::string value = arg(a, 0);
        return resultOnly(s.sendRawMessage(textOrNull(a, value)));
    });
    add("barrageCall", "", [](S& s, A) {
        s.barrageCall();
        return resultOnly(QJsonValue());
    });
    add("barrageCallConnected", "", [](S& s, A) { return resultOnly(s.barrageCallConnected()); });
    add("barrageListCall", "", [](S& s, A) {
        std::vector<std::string> latest;
        const int32_t r = s.barrageListCall(latest);
        QJsonArray messages;
        for (const std::string& message : latest) {
            messages.append(text(message));
        }
        return withOutputs(r, {{"latestMessages", messages}});
    });
    add("getOnlineCount", "", [](S& s, A) { return resultOnly(s.getOnlineCount()); });
    add("getSessionValueA", "", [](S& s, A) { return resultOnly(s.getSessionValueA()); });
    add("getSessionValueB", "", [](S& s, A) { return resultOnly(s.getSessionValueB()); });
    add("getSessionValueC", "", [](S& s, A) { return resultOnly(s.getSessionValueC()); });
    add("setBarrageProtocolNumber", "NUMBER", [](S& s, A a) {
        s.setBarrageProtocolNumber(intArg(a, 0));
        return resultOnly(QJsonValue());
    });
}

}  // namespace host_calls
