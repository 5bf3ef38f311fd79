#include "halyard/danmu_mock_platform.h"

#include <QJsonObject>
#include <mutex>

#include "tolvane_config/default_data.h"

namespace {

struct MockSetting {
    bool enabled = false;
    QString ip;
    int port = 0;
};

std::mutex& settingMutex() {
    static std::mutex mutex;
    return mutex;
}

MockSetting readSetting() {
    const QJsonObject mock =
        tolvane::config::readDefaultData().root.value(QStringLiteral("danmu.mock")).toObject();
    MockSetting setting;
    setting.enabled = mock.value(QStringLiteral("enabled")).toBool(false);
    setting.ip = mock.value(QStringLiteral("ip")).toString();
    setting.port = mock.value(QStringLiteral("port")).toInt(0);
    return setting;
}

MockSetting& cachedSetting(bool reload) {
    static MockSetting setting = readSetting();
    if (reload) {
        setting = readSetting();
    }
    return setting;
}

MockSetting current() {
    std::lock_guard<std::mutex> lock(settingMutex());
    return cachedSetting(false);
}

}  // namespace

bool DanmuMockPlatform::enabled() {
    return current().enabled;
}

QString DanmuMockPlatform::serverIp() {
    return current().ip;
}

int DanmuMockPlatform::serverPort() {
    return current().port;
}

void DanmuMockPlatform::reload() {
    std::lock_guard<std::mutex> lock(settingMutex());
    cachedSetting(true);
}
