#pragma once

#include <string>

// Fixed messages handed to the host, UTF-8, built once when the module loads.
namespace tolvane {

// A failed reply whose message is empty or missing.
inline const std::string kReplyNoMessageText = u8"网络异常，稍后重试";

// A successful reply that lacks the payload its parser needs.
inline const std::string kReplyDataErrorText = u8"服务器数据异常";

// An operation that got no reply at all.
inline const std::string kNetworkFailureText =
    u8"网络出现故障，请检查防火墙或系统时间设置，并稍后重试";

// Kept as the last login message when the passport service did not answer at all.
inline const std::string kNetworkFailureStoredText = u8"网络出现故障，请检查网络连接或防火墙设置";

}  // namespace tolvane
