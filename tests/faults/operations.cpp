// The operations whose every call is made to fail.
#include "faults/operations.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "fairlead/fairlead.h"
#include "support/device_test.h"
#include "support/spelled.h"

namespace fairlead_test {
namespace {

constexpr char kWan[] = "/etc/config/wan.cfg";
constexpr char kOld[] = "{\"mtu\":\"1500\",\"dns\":{\"first\":\"9.9.9.9\"}}";

class Document {
 public:
  explicit Document(const char* text) : talk_(StringTalk(text)) {}
  ~Document() { TalkFree(talk_); }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  talk_t* get() const { return talk_; }

 private:
  talk_t* talk_;
};

void put_script(const std::string& path, const std::string& body) {
  put_file(path, "#!/bin/sh\n" + body, 0755);
}

void no_wan() {}
void old_wan() { put_file(kWan, kOld); }
std::string wan() { return spelled(ConfigGet("wan", nullptr, nullptr)); }

int save() {
  const Document document("{\"mtu\":\"1492\"}");
  return document.get() && VesselFile(document.get(), kWan);
}
int set_whole() {
  const Document document("{\"mtu\":\"1492\"}");
  return document.get() && ConfigSet("wan", nullptr, nullptr, document.get());
}
int set_member() { return ConfigSetS("wan", nullptr, "dns/second", "1.1.1.1"); }
int delete_member() { return ConfigSet("wan", nullptr, "dns/first", nullptr); }
int delete_file() { return ConfigSet("wan", nullptr, nullptr, nullptr); }

int set_in_a_new_folder() {
  const Document document("{\"mtu\":\"1492\"}");
  return document.get() && ConfigSet("net/lte/apn", nullptr, nullptr, document.get());
}
std::string apn() { return spelled(ConfigGet("net/lte/apn", nullptr, nullptr)); }
void old_apn() {
  make_directories("/etc/config/net/lte");
  put_file("/etc/config/net/lte/apn.cfg", kOld);
}
int delete_with_folder() { return ConfigSet("net/lte/apn", nullptr, nullptr, nullptr); }

// No shell is asked to make these.
int set_below_odd_names() {
  const Document document("{\"mtu\":\"1492\"}");
  return document.get() && ConfigSet("a b/c$d/apn", nullptr, nullptr, document.get());
}
std::string odd() { return spelled(ConfigGet("a b/c$d/apn", nullptr, nullptr)); }

void project() {
  put_file("/prj/net/port.adp", "");
  put_script("/prj/net/lamp.ash", "printf '{\"state\":\"on\"}' >&$pipeid\n");
}
void bound() {
  project();
  put_file("/tmp/.var/dadp.cache", "{\"uplink\":\"/prj/net/port.adp\"}");
}
int bind_object() { return DynAdpCreate("lan/one", "net/port"); }
int unbind_object() { return DynAdpDelete("uplink"); }
std::string bindings() { return spelled(DynAdpList(nullptr)); }

void tied() { put_file("/tmp/.var/joint.cache", R"({"wan":{"up":{"dns.restart":""}}})"); }
int tie() { return JointCreate("wan", "up", "lan", "refresh"); }
int untie() { return JointDelete("wan", "up", "dns", "restart"); }
// Nothing is told by the call.
void tied_to_lamp() {
  project();
  put_file("/tmp/.var/joint.cache", R"({"wan":{"up":{"net/lamp.blink":""}}})");
}
int cast() {
  JointCast("wan", "up", nullptr);
  return 1;
}
std::string joints() { return spelled(JointList(nullptr)); }

// Whether a file could be copied is not told by the call.
int install() {
  return ConfigInstall("net") == 1 && file_content("/etc/config/net/wan.cfg") == kOld;
}
void defaults() { put_file("/prj/net/wan.cfg", kOld); }
std::string installed() { return spelled(ConfigGet("net/wan", nullptr, nullptr)); }

// Makes the store as well.
int set_value() {
  static const int value = 7;
  gvalue_t* store = GvalueCreate("levels");
  return store && GvalueSet(store, "net", &value, sizeof value);
}
std::string value() {
  gvalue_t* store = exists("/tmp/.var/gvalue/levels") ? GvalueCreate("levels") : nullptr;
  const int* found = store ? static_cast<const int*>(GvalueGet(store, "net")) : nullptr;
  return found ? std::to_string(*found) : "nothing";
}

int write_small() { return write_string("/tmp/small", "new") == 3; }
std::string small() {
  char text[64];
  return read_string("/tmp/small", text, sizeof text) ? text : "nothing";
}

// Nothing changes in these: what counts is what they leave.
int isolated_get() { return spelled(AdpSecureGet(nullptr, "wan", nullptr, nullptr)) == kOld; }
int isolated_set() {
  return AdpSecureSet(nullptr, "wan", nullptr, "dns/second", nullptr, "1.1.1.1");
}
int script_get() {
  return spelled(AdpGet(nullptr, "net/lamp", nullptr, nullptr)) == "{\"state\":\"on\"}";
}
int run_command() { return system_call(5, 1, "true") == 0 && errno == 0; }
int run_shell() { return system_string("true") == 0; }
std::string unchanged() { return "unchanged"; }

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = {
      {"save", old_wan, save, wan, true},
      {"save a new file", no_wan, save, wan, true},
      {"set a whole object", old_wan, set_whole, wan, true},
      {"set a member", old_wan, set_member, wan, true},
      {"set in a new folder", no_wan, set_in_a_new_folder, apn},
      {"set below folders of odd names", no_wan, set_below_odd_names, odd, true},
      {"delete a member", old_wan, delete_member, wan, true},
      {"delete an object", old_wan, delete_file, wan, true},
      {"delete an object and its folder", old_apn, delete_with_folder, apn, true},
      {"bind", bound, bind_object, bindings},
      {"bind the first", project, bind_object, bindings},
      {"unbind", bound, unbind_object, bindings},
      {"tie an event", tied, tie, joints},
      {"tie the first event", no_wan, tie, joints},
      {"untie an event", tied, untie, joints},
      {"cast an event", tied_to_lamp, cast, joints, false, true},
      {"install", defaults, install, installed},
      {"set a value", no_wan, set_value, value},
      {"write a small file", no_wan, write_small, small},
      {"isolated get", old_wan, isolated_get, wan, false, true},
      {"isolated set", old_wan, isolated_set, wan, false, true},
      {"script get", project, script_get, unchanged, false, true},
      {"run a command", no_wan, run_command, unchanged},
      {"run the shell", no_wan, run_shell, unchanged},
  };
  return table;
}

std::string listing() {
  std::vector<std::string> names;
  for (const char* root : {"/etc/config", "/prj", "/tmp"})
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
      if (entry.path() != "/etc/config/version") names.push_back(entry.path().string());
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) text += name + "\n";
  return text;
}

}  // namespace fairlead_test
