// The fixed places of the system and the names of adapter files.
#pragma once

namespace fairlead {

inline constexpr char kProjectRoot[] = "/prj";
inline constexpr char kRuntimeRoot[] = "/tmp/.var";
inline constexpr char kRegistryFile[] = "/tmp/.var/dadp.cache";
inline constexpr char kModuleExtension[] = ".adp";
inline constexpr char kScriptExtension[] = ".ash";
inline constexpr char kConfigExtension[] = ".cfg";

}  // namespace fairlead
