// `tolvane-host call` entries for the room record's single fields, the room's address, the list
// the reply parser keeps, and the release of a push-line array the module handed out.
#include <QJsonArray>

#include "call_arguments.h"

namespace host_calls {

void addRoomCalls(const AddCall& add) {
    using S = ILiveencoderNetService;
    using A = const QStringList&;

    add("getRoomUrl", "", [](S& s, A) {
        std::string url;
        const bool r = s.getRoomUrl(url);
        return withOutputs(r, {{"url", text(url)}});
    });
    add("getVipId", "", [](S& s, A) { return resultOnly(s.getVipId()); });
    add("getAnchorLevel", "", [](S& s, A) { return resultOnly(s.getAnchorLevel()); });
    add("getStoredList", "", [](S& s, A) {
        std::vector<CategoryNode> list;
        s.getStoredList(list);
        return withOutputs(QJsonValue(), {{"emotionWhiteList", nodeArray(list)}});
    });
    // A command line cannot hold a pointer, so this fetches the arrays a host would hold and
    // hands both back to the module, the way a host must release them.
    add("freeArray", "", [](S& s, A) {
        PushAddress* lines = nullptr;
        PushAddress* h265 = nullptr;
        int32_t count = 0, h265Count = 0;
        const int32_t fetched = s.get_all_rtmp_addresses(lines, count, h265, h265Count);
        s.freeArray(lines);
        s.freeArray(h265);
        return withOutputs(QJsonValue(), {{"fetchResult", fetched},
                                          {"releasedLines", lines != nullptr ? count : 0},
                                          {"releasedH265", h265 != nullptr ? h265Count : 0}});
    });
}

}  // namespace host_calls
