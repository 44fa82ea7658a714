// The source modules that the type-node code's assertions name.
#pragma once

namespace tollan::rtcheck {

inline constexpr const char *kTypesModule = "c/types";
inline constexpr const char *kSymbolsModule = "c/sym";
inline constexpr const char *kStringsModule = "c/string";
inline constexpr const char *kOutputModule = "c/output";
// The shadow-size query belongs with the code that lays out pointer information.
inline constexpr const char *kShadowModule = "c/up_comp";

}  // namespace tollan::rtcheck
