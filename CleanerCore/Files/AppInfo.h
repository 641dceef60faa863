#pragma once

namespace loftmere::AppInfo {

inline constexpr const char* name = "Ostrel Loftmere";
inline constexpr const char* bundleID = "com.ostrel.loftmere";
inline constexpr const char* agentLabel = "com.ostrel.loftmere.agent";

} // namespace loftmere::AppInfo
