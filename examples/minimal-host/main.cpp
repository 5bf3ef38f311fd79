// minimal-host: logs in, shows the profile and the room, follows the barrage for a few seconds
// and shuts down. Run it against a simulator: tolvane-sim prints the default.data to use.
//   TOLVANE_DEFAULT_DATA=<file> ./minimal-host [name password seconds]
#include <tolvane/i_liveencoder_net_service.h>

#include <QCoreApplication>
#include <QTimer>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

// The module calls these on its own threads: keep them short and thread-safe.
class HostObserver : public ServiceObserver, public BreadcrumbSink {
public:
    void onRoomStatus(int32_t status) override { std::printf("room status %d\n", status); }
    void onText(const std::string& text) override { std::printf("room text %s\n", text.c_str()); }
    void onShowEnd(int32_t reason, float banHours) override {
        std::printf("show ended, reason %d, ban %.1f h\n", reason, banHours);
    }
    void onBarrageMessage(const BarrageMessage* message) override {
        ++messages;  // the message is valid only during this call: copy what you keep
        if (message->typeName == "chatmsg") {
            ++chats;
        }
    }
    // One per HTTP request, on the thread that made the call.
    void onBreadcrumb(const VxBreadcrumb<VxBreadcrumb_Http>& crumb) override {
        ++requests;
        if (crumb.part.statusCode != 200) {
            std::printf("%s %s -> %d\n", crumb.part.method.c_str(), crumb.part.url.c_str(),
                        crumb.part.statusCode);
        }
    }

    std::atomic<int> messages{0};
    std::atomic<int> chats{0};
    std::atomic<int> requests{0};
};

int main(int argc, char** argv) {
    // The service belongs to the thread that creates it, which must run a Qt event loop.
    QCoreApplication app(argc, argv);
    const char* name = argc > 2 ? argv[1] : "anchor";
    const char* password = argc > 2 ? argv[2] : "secret123";
    const int seconds = argc > 3 ? std::atoi(argv[3]) : 3;

    HostObserver observer;  // must outlive the service
    ILiveencoderNetService* service = CreateNetService(&observer, &observer);
    if (service == nullptr) {
        std::fprintf(stderr, "CreateNetService failed\n");
        return 1;
    }

    std::string error, longToken;
    const int32_t login = service->login(name, password, error, longToken);
    if (login != 0) {
        std::fprintf(stderr, "login: %d %s\n", login, error.c_str());
        service->release();
        return 1;
    }
    UserRecord user;
    service->getUserRecord(user);
    std::printf("logged in as %s (uid %s)\n", user.nickname.c_str(), user.uid.c_str());

    // Loads the room information, then connects to the room's barrage servers.
    const int32_t barrage = service->startBarrage();
    RoomSummary room;
    service->getRoomRecord(room);
    std::printf("room %d \"%s\", %s / %s\n", room.roomId, room.roomName.c_str(),
                room.gameName.c_str(), room.childName.c_str());
    if (barrage != 0) {
        std::fprintf(stderr, "startBarrage: %d\n", barrage);
    }

    // Barrage callbacks arrive while the event loop turns.
    QTimer::singleShot(seconds * 1000, &app, &QCoreApplication::quit);
    app.exec();

    service->stop();     // leaves the room, closes the barrage connection
    service->release();  // the service is gone after this; never delete it
    std::printf("%d barrage messages (%d chat), %d requests\n", observer.messages.load(),
                observer.chats.load(), observer.requests.load());
    return barrage == 0 && observer.messages > 0 ? 0 : 1;
}
