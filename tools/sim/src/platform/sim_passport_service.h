#pragma once

#include <optional>
#include <string>

#include "platform/sim_platform_state.h"

namespace tolvane::sim {

class SimHttpServer;

// Codes the simulated passport answers with; the module maps them to its own codes.
namespace passport_codes {
constexpr int kWrongCredentials = 603;
constexpr int kWrongCaptcha = 609;
constexpr int kCaptchaExpired = 611;
constexpr int kUnknownQrCode = 613;
constexpr int kLongTokenExpired = 120012;
constexpr int kRemoteLoginRequired = 130014;
constexpr int kQrCodePending = 130018;  // issued or waiting: nobody scanned it yet
constexpr int kQrCodeScanned = 130019;  // scanned, the anchor has not confirmed in the app
constexpr int kQrCodeExpired = 130020;
// The QR control routes: a step from the wrong state.
constexpr int kQrWrongState = 4510;
}  // namespace passport_codes

// The account a phone number logs in: the one it is bound to, else the fixture's owner.
std::optional<SimAccount> accountByLoginPhone(const SimPlatformState& state,
                                              const std::string& phone);

// Adds the passport service's routes (logins, SMS codes, QR codes), the QR control routes
// under /sim/qr/ and the account-code routes (sim_account_code_service.h) to the server.
void addPassportRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim
