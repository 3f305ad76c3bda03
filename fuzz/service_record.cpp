// A service record of any bytes: it is described as its layout says, or not at all.
#include <cstring>

#include "fairlead/service.h"
#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::text_of;

constexpr char kFile[] = "/tmp/.var/service/fuzzed.spid";
constexpr size_t kObjectAt = 8, kInterfaceAt = 72, kParametersAt = 136, kNameSize = 64;
constexpr size_t kLongestParameters = 128 * 1024;

std::string field(const std::string& record, size_t at, size_t most) {
  if (at >= record.size()) return "";
  const std::string bytes = record.substr(at, most);
  return bytes.substr(0, std::min(bytes.find('\0'), bytes.size()));
}

// Each parameter that can be read has its place in the description, whatever it holds.
void check_parameters(talk_t* info, const std::string& text) {
  fuzzing::ExactText work(text);
  param_t parameters = {};
  const int count = ParamAnalysis(&parameters, work.get()) == 1 ? ParamCount(&parameters) : 0;
  for (int i = 1; i <= PARAM_MAX; ++i) {
    const std::string name = "parameter" + std::to_string(i);
    talk_t* const parameter = i <= count ? ParamGetT(&parameters, i) : nullptr;
    axp_t* const told = VesselFind(info, name.c_str());
    REQUIRE(!told == !parameter);
    if (told) REQUIRE(text_of(AxpGetX(told)) == text_of(parameter));
  }
  ParamClear(&parameters);
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const std::string record = input.rest();
  put_file(kFile, record);
  REQUIRE(ServicePid("fuzzed") == -1);
  const OwnedTalk info(ServiceInfo("fuzzed"));
  const OwnedTalk list(ServiceList());
  REQUIRE(list && VesselCount(list.get()) == (info ? 1 : 0));

  const std::string object = field(record, kObjectAt, kNameSize);
  const bool counts = record.size() >= kInterfaceAt &&
                      record.size() <= kParametersAt + kLongestParameters && !object.empty();
  REQUIRE(counts == (info != nullptr));
  if (!info) return;
  REQUIRE(VesselGetS(info.get(), "status") == std::string("die"));
  REQUIRE(VesselGetS(info.get(), "adp") == object);
  const std::string interface = field(record, kInterfaceAt, kNameSize);
  REQUIRE(!VesselFind(info.get(), "func") == interface.empty());
  if (!interface.empty()) REQUIRE(VesselGetS(info.get(), "func") == interface);
  check_parameters(info.get(), field(record, kParametersAt, kLongestParameters));
}
