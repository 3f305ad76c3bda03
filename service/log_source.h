// The name under which services are logged.
#pragma once

namespace fairlead {

inline constexpr char kServiceSource[] = "service";

}  // namespace fairlead
