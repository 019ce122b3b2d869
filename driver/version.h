#pragma once
// The engine's name, version and build text, as every dialect prints them.

inline constexpr const char* ENGINE_NAME = "Morvaine";
inline constexpr const char* VERSION     = "2.0.34";
inline constexpr const char* BUILD_TEXT  = "SSE POPCNT";
