// One request of each kind on a small device.
#include "calls/operations.h"

#include <filesystem>
#include <string>

#include "fairlead/fairlead.h"
#include "support/child.h"
#include "support/device_test.h"

namespace fairlead_test {
namespace {

constexpr uint32_t kDebug = 7;
constexpr uint32_t kConsoleNotice = LOG_MODE_CONSOLE | 5;

bool is_text(talk_t* value, const std::string& expected) {
  const bool same = value && RenderCheck(value) && expected == RenderString(value);
  TalkFree(value);
  return same;
}

// A request by identifier that ends with this status and, for a read, with this text.
bool he(const char* text, int32_t status, const char* answer = nullptr) {
  uii_t* identifier = UiiCreate(text);
  talk_t* out = nullptr;
  const bool served = He(identifier, &out) == status;
  UiiFree(identifier);
  return answer ? served && is_text(out, answer) : served && out == TALK_DONE;
}

// The stored value is another one each time, so that every set writes.
const char* next_number() {
  static char number[] = "0";
  *number = *number == '9' ? '0' : static_cast<char>(*number + 1);
  return number;
}

bool config_get() { return is_text(ConfigGet("wan", nullptr, "dns/first"), "9.9.9.9"); }
bool config_set() { return ConfigSetS("wan", nullptr, "mtu", next_number()) == 1; }
bool he_read() { return he("wan:dns/first", 0, "9.9.9.9"); }
bool he_write() { return he((std::string("wan:mtu=") + next_number()).c_str(), 1); }
bool he_call() { return he("net/quiet.nod[1,2]", 1); }
bool isolated_read() {
  return is_text(AdpSecureGet(nullptr, "wan", nullptr, "dns/first"), "9.9.9.9");
}
bool shell_call() { return AdpCall(nullptr, "net/lamp", "on", nullptr, nullptr) == TALK_DONE; }
bool adapter_path() {
  char file[256];
  return AdpPath(nullptr, "net/quiet", file, sizeof file) == ADP_PRJ;
}
bool joint_cast() {
  JointCast("wan", "up", nullptr);
  return true;
}
bool log_filtered() {
  LogWrite(kDebug, "calls", __LINE__, "not told: %d", 1);
  return true;
}
bool log_told() {
  LogWrite(kConsoleNotice, "calls", __LINE__, "told: %d", 1);
  return true;
}
bool gvalue_get() { return GvalueGet(nullptr, "level") != nullptr; }
bool gvalue_set() {
  const int level = 7;
  return GvalueSet(nullptr, "level", &level, sizeof level) == 1;
}

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = {
      {"ConfigGet", config_get},
      {"ConfigSet", config_set},
      {"He, read of a pure object", he_read},
      {"He, write of a pure object", he_write},
      {"He, call into a loaded module", he_call},
      {"isolated read", isolated_read},
      {"shell call", shell_call},
      {"AdpPath", adapter_path},
      {"JointCast, one target", joint_cast},
      {"LogWrite, filtered", log_filtered},
      {"LogWrite, to the console", log_told},
      {"GvalueGet", gvalue_get},
      {"GvalueSet", gvalue_set},
  };
  return table;
}

void arrange_device() {
  put_file("/etc/config/wan.cfg", "{\"mtu\":\"1500\",\"dns\":{\"first\":\"9.9.9.9\"},\"note\":\"" +
                                      std::string(2000, 'x') + "\"}");
  put_file("/etc/config/version", "modify");
  put_file("/tmp/.var/dadp.cache", "{\"lan\":{\"one\":\"/prj/net/quiet.adp\"}}");
  put_file("/tmp/.var/joint.cache", "{\"wan\":{\"up\":{\"net/quiet.nod\":\"\"}}}");
  put_file("/prj/net/lamp.ash", "#!/bin/sh\nprintf '\\001' >&$pipeid\n", 0755);
  std::filesystem::copy_file(QUIET_ADAPTER, "/prj/net/quiet.adp");
  run_child([] { return gvalue_set() ? 0 : 1; });  // this process opens no store
}

}  // namespace fairlead_test
