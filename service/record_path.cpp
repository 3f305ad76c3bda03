// Builds the path of a record from the name of its service.
#include "service/record_path.h"

#include <cerrno>
#include <cstring>

#include "adp/fixed_paths.h"
#include "base/fail.h"
#include "fairlead/adp/project.h"

namespace fairlead {
namespace {

constexpr char kFolder[] = "service";
constexpr size_t kNameSize = 256;

constexpr size_t length_of(std::string_view text) { return text.size(); }
// Two slashes stand in the path, and a terminator behind it.
constexpr size_t kLongestName =
    kPathSize - length_of(kRuntimeRoot) - length_of(kFolder) - length_of(kRecordExtension) - 3;

}  // namespace

char* service_folder(char* buffer, int size) {
  return ProjectVarPath(buffer, size, kFolder, nullptr);
}

bool is_service_name(const char* service) {
  if (!service || !*service || strchr(service, '/')) return fail<bool>(EINVAL);
  return strlen(service) <= kLongestName || fail<bool>(ENAMETOOLONG);
}

RecordPath::RecordPath(const char* format, va_list arguments) {
  FixedText<kNameSize> service;
  if (format) service.vformat(format, arguments);
  build(service.text());  // a name that was cut is too long for a path as well
}

void RecordPath::build(const char* service) {
  built_ = is_service_name(service) && ProjectVarPath(path_, sizeof path_, kFolder, "%s%s", service,
                                                      kRecordExtension) != nullptr;
}

}  // namespace fairlead
