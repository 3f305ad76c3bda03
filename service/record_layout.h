// The file of a service byte for byte, as in docs/services.md.
#pragma once

#include <cstddef>

namespace fairlead {

inline constexpr size_t kObjectOffset = 8;  // the bytes before it are zero and mean nothing
inline constexpr size_t kInterfaceOffset = 72;
inline constexpr size_t kParametersOffset = 136;

inline constexpr size_t kNameRoom = kInterfaceOffset - kObjectOffset;
static_assert(kNameRoom == kParametersOffset - kInterfaceOffset);

// A file of fewer bytes is no record.
inline constexpr size_t kShortestRecord = kInterfaceOffset;
// Nor is one whose parameters are longer than the kernel hands to a program in one argument.
inline constexpr size_t kLongestParameters = size_t{128} * 1024;
inline constexpr size_t kLongestRecord = kParametersOffset + kLongestParameters;

}  // namespace fairlead
