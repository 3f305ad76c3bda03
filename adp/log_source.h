// The name under which adapters other than scripts are logged.
#pragma once

namespace fairlead {

inline constexpr char kAdpSource[] = "adp";

}  // namespace fairlead
