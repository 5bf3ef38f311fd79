#pragma once

#include <QString>
#include <cstdint>

// The answers of loginByQRCode while the anchor has not finished in the app; the module passes
// the platform's pending codes through.
namespace qr_codes {
constexpr int32_t kWaiting = 233;     // nobody scanned the code yet
constexpr int32_t kScanned = 130019;  // scanned, not confirmed in the app yet
constexpr int32_t kExpired = 130020;  // the code ran out
constexpr int32_t kUnknown = 225;     // the platform no longer knows the code
}  // namespace qr_codes

constexpr int32_t kNoAnswer = 210;

// A result code as a person reads it in the status line: "NoAnswer (210)".
QString resultCodeName(int32_t code);
