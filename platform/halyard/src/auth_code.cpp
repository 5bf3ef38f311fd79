#include "halyard/auth_code.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <cstdlib>
#include <cstring>

namespace {

// The secrets are shared with the platform's servers (and the simulator); the test
// environments have their own so that a test signature never passes in production.
constexpr char kProductionSecret[] = "tolvane-prod-5e0c93a1d7f24b68";
constexpr char kTestSecret[] = "tolvane-live-8b41f6c2e09d3a75";

char* signWith(const char* utf8Text, const char* secret) {
    if (utf8Text == nullptr) {
        return nullptr;
    }
    QByteArray text(utf8Text);
    text.replace("%s", secret);
    const QByteArray hex = QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex();
    char* result = static_cast<char*>(std::malloc(static_cast<size_t>(hex.size()) + 1));
    if (result == nullptr) {
        return nullptr;
    }
    std::memcpy(result, hex.constData(), static_cast<size_t>(hex.size()) + 1);
    return result;
}

}  // namespace

extern "C" {

char* GenerateAuthCode(const char* utf8Text) {
    return signWith(utf8Text, kProductionSecret);
}

char* GenerateAuthCodeLive(const char* utf8Text) {
    return signWith(utf8Text, kTestSecret);
}

void FreeAuthCode(char* code) {
    std::free(code);
}

}  // extern "C"
