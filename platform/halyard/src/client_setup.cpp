#include "halyard/client_setup.h"

#include <mutex>

namespace {

struct ClientSetup {
    std::mutex mutex;
    int fuzzyKeyType = 0;
    QString clientVersion = QStringLiteral("v1.0.0.0");
};

ClientSetup& setup() {
    static ClientSetup instance;
    return instance;
}

}  // namespace

void InitFuzzyKeyType(int type) {
    std::lock_guard<std::mutex> lock(setup().mutex);
    setup().fuzzyKeyType = type;
}

int fuzzyKeyType() {
    std::lock_guard<std::mutex> lock(setup().mutex);
    return setup().fuzzyKeyType;
}

void setClientVersion(const QString& version) {
    std::lock_guard<std::mutex> lock(setup().mutex);
    setup().clientVersion = version;
}

QString clientVersion() {
    std::lock_guard<std::mutex> lock(setup().mutex);
    return setup().clientVersion;
}
