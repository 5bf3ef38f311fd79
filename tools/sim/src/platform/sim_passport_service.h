#pragma once

namespace tolvane::sim {

class SimHttpServer;
class SimPlatformState;

// Codes the simulated passport answers with; the module maps them to its own codes.
namespace passport_codes {
constexpr int kWrongCredentials = 603;
constexpr int kWrongCaptcha = 609;
constexpr int kUnknownQrCode = 613;
constexpr int kLongTokenExpired = 120012;
constexpr int kRemoteLoginRequired = 130014;
constexpr int kQrCodePending = 130018;
}  // namespace passport_codes

// Adds the passport service's routes (logins, SMS codes, QR codes) to the server.
void addPassportRoutes(SimHttpServer& server, SimPlatformState& state);

}  // namespace tolvane::sim
