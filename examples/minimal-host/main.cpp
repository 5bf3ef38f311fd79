// minimal-host: logs in, goes live on the room's first push line, follows the barrage for a few
// seconds, ends the show and shuts down, without ever blocking its own thread. Run it against a
// simulator: tolvane-sim prints the default.data to use (or `ctest` in its build folder).
//   TOLVANE_DEFAULT_DATA=<file> ./minimal-host [name password seconds]
#include <tolvane/async_net_service.h>
#include <tolvane/i_liveencoder_net_service.h>
#include <tolvane/result_codes.h>

#include <QCoreApplication>
#include <QTimer>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

// What onRoomStatus reports.
const char* roomStatusText(int32_t status) {
    switch (status) {
        case tolvane::kRoomStatusLoggedIn:
            return "logged in";
        case tolvane::kRoomStatusKicked:
            return "kicked out";
        case tolvane::kRoomStatusReconnecting:
            return "reconnecting";
        case tolvane::kRoomStatusConnectionLost:
            return "connection lost";
        case tolvane::kRoomStatusRejected:
            return "login rejected";
        default:
            return "unknown";
    }
}

// The module calls these on its own threads: keep them short and thread-safe.
class HostObserver : public ServiceObserver, public BreadcrumbSink {
public:
    void onRoomStatus(int32_t status) override {
        std::printf("room status %d (%s)\n", status, roomStatusText(status));
    }
    void onText(const std::string& text) override { std::printf("room text %s\n", text.c_str()); }
    void onShowEnd(int32_t reason, float banHours) override {
        std::printf("show ended, reason %d, ban %.0f h\n", reason, banHours);
        showEnded = true;
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
    std::atomic<bool> showEnded{false};
};

// What the service thread hands back after the login.
struct Login {
    int32_t code = 0;
    std::string error;
    UserRecord user;
};

// On the service thread: blocks until the passport answers (3 s at most).
Login logIn(ILiveencoderNetService& service, const std::string& name, const std::string& password) {
    Login login;
    std::string longToken;  // keep it to log in again without the password (loginByToken)
    login.code = service.login(name.c_str(), password.c_str(), login.error, longToken);
    service.getUserRecord(login.user);
    return login;
}

// What the service thread hands back on the way to a live show: the step that answered `code`.
struct Live {
    const char* step = "";
    int32_t code = 0;
    RoomSummary room;
    PushAddress line;
};

// On the service thread, after a login: from the room to a live show, up to the first failure.
Live goLive(ILiveencoderNetService& service) {
    Live live;
    // Loads the room and its barrage servers, then connects in the background: room status 0
    // and the barrage messages follow on the module's threads.
    live.step = "startBarrage";
    live.code = service.startBarrage();
    if (live.code != tolvane::kResultOk) {
        return live;
    }
    service.getRoomRecord(live.room);

    // Goes with the line request and the start: the category that setLiveClassify picked
    // (a cid2 of 0 sends none) and the show's flags.
    LiveParameters parameters;
    service.setLiveParameters(parameters);

    live.step = "get_all_rtmp_addresses";
    PushAddress* lines = nullptr;
    PushAddress* h265Lines = nullptr;
    int32_t count = 0;
    int32_t h265Count = 0;
    live.code = service.get_all_rtmp_addresses(lines, count, h265Lines, h265Count);
    if (live.code == tolvane::kResultOk && count > 0) {
        live.line = lines[0];
    } else if (live.code == tolvane::kResultLiveRefused && count == 3) {
        std::fprintf(stderr, "refused: %s; opens %s, duration %s\n", lines[0].url.c_str(),
                     lines[1].url.c_str(), lines[2].url.c_str());
    }
    // The arrays are the module's, even those of a refusal: give each back, once.
    service.freeArray(lines);
    service.freeArray(h265Lines);
    if (live.code != tolvane::kResultOk) {
        return live;
    }

    // Takes a URL of the last line list only; any other gives 1 and sends nothing.
    live.step = "open_live_room";
    live.code = service.open_live_room(live.line.url);
    return live;
}

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const std::string name = argc > 2 ? argv[1] : "anchor";
    const std::string password = argc > 2 ? argv[2] : "secret123";
    const int seconds = argc > 3 ? std::atoi(argv[3]) : 3;

    HostObserver observer;  // must outlive the service
    // Once stop_live_room has answered, this thread looks for the end that the barrage announces.
    QTimer showEndWatch;
    showEndWatch.setInterval(50);
    QObject::connect(&showEndWatch, &QTimer::timeout, &app, [&] {
        if (observer.showEnded) {
            app.quit();
        }
    });

    // The service gets a thread and an event loop of its own; this thread never waits on it.
    tolvane::AsyncNetService net(&CreateNetService, &observer, &observer);
    if (!net.isValid()) {
        std::fprintf(stderr, "CreateNetService failed\n");
        return 1;
    }

    const auto showStopped = [&](int32_t code) {
        if (code != tolvane::kResultOk) {
            std::fprintf(stderr, "stop_live_room: %d\n", code);
            app.exit(1);
            return;
        }
        showEndWatch.start();
    };
    const auto stopLive = [&] {
        net.post([](ILiveencoderNetService& service) { return service.stop_live_room(); }, &app,
                 showStopped);
    };
    const auto showLive = [&](const Live& live) {
        if (live.code != tolvane::kResultOk) {
            std::fprintf(stderr, "%s: %d\n", live.step, live.code);
            app.exit(1);
            return;
        }
        std::printf("room %d \"%s\", %s / %s\n", live.room.roomId, live.room.roomName.c_str(),
                    live.room.gameName.c_str(), live.room.childName.c_str());
        std::printf("live on line %d\n", live.line.id);
        // Barrage callbacks arrive on the module's threads while the loops turn.
        QTimer::singleShot(seconds * 1000, &app, stopLive);
    };
    const auto showLogin = [&](const Login& login) {
        if (login.code == tolvane::kResultRemoteLoginNeeded) {
            std::fprintf(stderr,
                         "confirm by SMS: getRemoteLoginInfo, sendPhoneCaptcha, remoteLogin\n");
        }
        if (login.code != tolvane::kResultOk) {
            std::fprintf(stderr, "login: %d %s\n", login.code, login.error.c_str());
            app.exit(1);
            return;
        }
        std::printf("logged in as %s (uid %s)\n", login.user.nickname.c_str(),
                    login.user.uid.c_str());
        net.post(&goLive, &app, showLive);
    };
    const auto logInAnchor = [name, password](ILiveencoderNetService& service) {
        return logIn(service, name, password);
    };
    net.post(logInAnchor, &app, showLogin);
    // Gives up when the show never ends, so that a test run cannot hang.
    QTimer::singleShot((seconds + 30) * 1000, &app, [&] {
        std::fprintf(stderr, "the show did not end within %d s\n", seconds + 30);
        app.exit(1);
    });

    if (app.exec() != 0) {
        return 1;
    }
    std::printf("%d barrage messages (%d chat), %d requests\n", observer.messages.load(),
                observer.chats.load(), observer.requests.load());
    // Leaving scope destroys `net`: it stops and releases the service on its own thread.
    return observer.messages > 0 ? 0 : 1;
}
