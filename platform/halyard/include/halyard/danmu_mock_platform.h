#pragma once

#include <QString>

// Switch that sends the barrage connection to a mock server instead of the gateway's list.
// Read from the "danmu.mock" object of default.data: {"enabled": true, "ip": "127.0.0.1",
// "port": 9000}. Read once per process.
class DanmuMockPlatform {
public:
    static bool enabled();
    static QString serverIp();
    static int serverPort();

    // Re-reads default.data; for tests that switch the setting within one process.
    static void reload();
};
