// minimal-host: logs in, shows the profile and the room, follows the barrage for a few seconds
// and shuts down, without ever blocking its own thread. Run it against a simulator: tolvane-sim
// prints the default.data to use.
//   TOLVANE_DEFAULT_DATA=<file> ./minimal-host [name password seconds]
#include <tolvane/async_net_service.h>
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

// What the service thread hands back after the login and after the room start-up.
struct Login {
    int32_t code = 0;
    std::string error;
    UserRecord user;
};
struct Room {
    int32_t barrage = 0;
    RoomSummary record;
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const std::string name = argc > 2 ? argv[1] : "anchor";
    const std::string password = argc > 2 ? argv[2] : "secret123";
    const int seconds = argc > 3 ? std::atoi(argv[3]) : 3;

    HostObserver observer;  // must outlive the service
    // The service gets a thread and an event loop of its own; this thread never waits on it.
    tolvane::AsyncNetService net(&CreateNetService, &observer, &observer);
    if (!net.isValid()) {
        std::fprintf(stderr, "CreateNetService failed\n");
        return 1;
    }

    int32_t barrage = -1;
    const auto showRoom = [&](const Room& room) {
        barrage = room.barrage;
        std::printf("room %d \"%s\", %s / %s\n", room.record.roomId, room.record.roomName.c_str(),
                    room.record.gameName.c_str(), room.record.childName.c_str());
        if (room.barrage != 0) {
            std::fprintf(stderr, "startBarrage: %d\n", room.barrage);
        }
        // Barrage callbacks arrive on the module's threads while the loops turn.
        QTimer::singleShot(seconds * 1000, &app, &QCoreApplication::quit);
    };
    const auto showLogin = [&](const Login& login) {
        if (login.code != 0) {
            std::fprintf(stderr, "login: %d %s\n", login.code, login.error.c_str());
            app.exit(1);
            return;
        }
        std::printf("logged in as %s (uid %s)\n", login.user.nickname.c_str(),
                    login.user.uid.c_str());
        // Loads the room information, then connects to the room's barrage servers.
        net.post(
            [](ILiveencoderNetService& service) {
                Room room;
                room.barrage = service.startBarrage();
                service.getRoomRecord(room.record);
                return room;
            },
            &app, showRoom);
    };
    net.post(
        [name, password](ILiveencoderNetService& service) {
            Login login;
            std::string longToken;
            login.code = service.login(name.c_str(), password.c_str(), login.error, longToken);
            service.getUserRecord(login.user);
            return login;
        },
        &app, showLogin);

    if (app.exec() != 0) {
        return 1;
    }
    std::printf("%d barrage messages (%d chat), %d requests\n", observer.messages.load(),
                observer.chats.load(), observer.requests.load());
    // Leaving scope destroys `net`: it stops and releases the service on its own thread.
    return barrage == 0 && observer.messages > 0 ? 0 : 1;
}
