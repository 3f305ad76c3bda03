// Requests beside their floors: the bare system calls of the same work, in turn in one process.
//
// usage: tools/device-root build/bench/bench/request_bench [SECONDS-PER-ROW [PART-OF-A-NAME]]
#include <search.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include "device.h"
#include "fairlead/fairlead.h"
#include "floors.h"
#include "in_turn.h"

namespace {

using bench::Effort;
using bench::require;
using bench::Work;

constexpr char kGateway[] = "routes/7/via";
constexpr int kShortCalls = 1000;
constexpr int kQueue = 5;  // datagrams that /dev/log takes without a reader

struct {
  std::string configuration, value, message;
} texts;

void expect_text(talk_t* answer) {
  require(answer && RenderCheck(answer), "no text is answered");
  TalkFree(answer);
}

void ask(const char* text, int32_t status) {
  uii_t* identifier = UiiCreate(text);
  talk_t* out = nullptr;
  require(He(identifier, &out) == status, text);
  UiiFree(identifier);
  if (status == 0) expect_text(out);
}

// ---- Floors

void read_configuration() { bench::read_file(bench::kConfigFile); }
void settle() { bench::settle_disk(bench::kConfigFolder); }
void replace_configuration() {
  bench::replace_file(bench::kConfigFolder, bench::kConfigFile, texts.configuration);
}
void empty_calls() {
  for (int call = 0; call < kShortCalls; ++call)
    bench::do_nothing(7, "bench", __LINE__, "not told: %d", 1);
}
void look_in_registry() { (void)!access(bench::kRegistry, F_OK); }
void find_module() {
  look_in_registry();
  bench::look_for(bench::kModule, bench::kScript);
  bench::do_nothing(0, "", 0, "");
}
void find_script_and_run() {
  look_in_registry();
  bench::look_for("/prj/bench/lamp.adp", bench::kScript);
  bench::fork_and_run(bench::kScript);
}
void find_pure() {
  look_in_registry();
  bench::look_for("/prj/bench/object0.adp", "/prj/bench/object0.ash");
}
void read_registry() { bench::read_file(bench::kRegistry); }
void cast_bare() {
  bench::read_file(bench::kJoints);
  for (int joint = 0; joint < bench::kJointCount; ++joint) find_module();
}
void send_message() { bench::send_to_syslog(texts.message.c_str()); }
void look_in_table() {
  const ENTRY wanted = {.key = texts.value.data(), .data = nullptr};
  for (int call = 0; call < kShortCalls; ++call) require(hsearch(wanted, FIND), "hsearch");
}
void copy_value() {
  const int number = 7;
  bench::copy_under_lock(&number, sizeof number);
}

// ---- Requests

void config_get() { expect_text(ConfigGet("bench/wan", nullptr, kGateway)); }

// Another value each time, so that each set writes.
const char* next_number() {
  static char number[] = "1000";
  number[3] = number[3] == '9' ? '0' : static_cast<char>(number[3] + 1);
  return number;
}
void config_set() {
  require(ConfigSetS("bench/wan", nullptr, "mtu", next_number()) == 1, "ConfigSet");
}
void he_read() { ask("bench/wan:routes/7/via", 0); }
void he_write() {
  char text[32];
  snprintf(text, sizeof text, "bench/wan:mtu=%s", next_number());
  ask(text, 1);
}
void he_call() { ask("bench/many.i07[1,2]", 1); }
void isolated_read() {
  talk_t* answer = AdpSecureGet(nullptr, "bench/short", nullptr, nullptr);
  require(answer, "AdpSecureGet");
  TalkFree(answer);
}
void shell_call() {
  require(AdpCall(nullptr, "bench/lamp", "on", nullptr, nullptr) == TALK_DONE, "shell call");
}
void adapter_path() {
  char file[256];
  require(AdpPath(nullptr, "bench/object0", file, sizeof file) > 0, "AdpPath");
}
void joint_cast() { JointCast("bench/wan", "up", nullptr); }
void log_filtered() {
  for (int call = 0; call < kShortCalls; ++call) LogWrite(7, "bench", __LINE__, "not told: %d", 1);
}
void log_told() { LogWrite(4, "bench", __LINE__, "the link is %s", "up"); }
void gvalue_get() {
  for (int call = 0; call < kShortCalls; ++call)
    require(GvalueGet(nullptr, texts.value.c_str()), "GvalueGet");
}
void gvalue_set() {
  const int number = 7;
  require(GvalueSet(nullptr, texts.value.c_str(), &number, sizeof number) == 1, "GvalueSet");
}

// ----

struct Row {
  const char* name;
  Work floor, own;
  int calls = 1;
  int registrations = 0;
};

constexpr const char* kRead = "open, lock, stat, read, close";
constexpr const char* kReplace = "write, sync, rename, sync folder";
constexpr const char* kLookUp = "look for three files";

const Row kRows[] = {
    {"ConfigGet", {kRead, read_configuration}, {"", config_get}, 20},
    {"ConfigSet", {kReplace, replace_configuration, settle}, {"", config_set, settle}},
    {"He read", {kRead, read_configuration}, {"", he_read}, 20},
    {"He write", {kReplace, replace_configuration, settle}, {"", he_write, settle}},
    {"He call of a module", {"look for two files, empty call", find_module}, {"", he_call}, 20},
    {"isolated read",
     {"fork, 200 bytes by socket pair", bench::fork_and_answer},
     {"", isolated_read}},
    {"shell call", {"look-up, fork, sh, socket pair", find_script_and_run}, {"", shell_call}},
    {"AdpPath, 0 registrations", {kLookUp, find_pure}, {"", adapter_path}, 50},
    {"AdpPath, 10 registrations", {kRead, read_registry}, {"", adapter_path}, 50, 10},
    {"AdpPath, 1000 registrations", {kRead, read_registry}, {"", adapter_path}, 1, 1000},
    {"JointCast of 100", {"read the file, 100 x look for two files", cast_bare}, {"", joint_cast}},
    {"LogWrite, filtered",
     {"empty call", empty_calls, nullptr, kShortCalls},
     {"", log_filtered, nullptr, kShortCalls}},
    {"LogWrite to syslog",
     {"send", send_message, bench::drain_syslog},
     {"", log_told, bench::drain_syslog},
     kQueue},
    {"GvalueGet of 100",
     {"hsearch", look_in_table, nullptr, kShortCalls},
     {"", gvalue_get, nullptr, kShortCalls}},
    {"GvalueSet of 100", {"flock, copy", copy_value}, {"", gvalue_set}, 50},
};

void arrange_texts() {
  talk_t* stored = ConfigGet("bench/wan", nullptr, nullptr);
  char* text = VesselString(stored);
  require(text, "ConfigGet");
  texts.configuration = text;
  free(text);
  TalkFree(stored);
  texts.value = bench::value_name(bench::kValueCount / 2);
  texts.message = "<28>Jan  1 00:00:00 bench: the link is up";
}

// The names that the value store has, in the C library's hash table.
void arrange_table() {
  require(hcreate(2 * bench::kValueCount), "hcreate");
  for (int number = 0; number < bench::kValueCount; ++number) {
    const ENTRY entry = {.key = strdup(bench::value_name(number).c_str()), .data = nullptr};
    require(hsearch(entry, ENTER), "hsearch");
  }
}

}  // namespace

int main(int count, char** arguments) {
  const Effort effort = {.seconds = count > 1 ? atof(arguments[1]) : 1.0, .rounds = 31};
  const char* wanted = count > 2 ? arguments[2] : "";
  signal(SIGCHLD, SIG_DFL);
  bench::arrange_device(MANY_ADAPTER);
  bench::open_syslog();
  bench::open_shared("/tmp/.var/bench-store", 4096);
  arrange_texts();
  arrange_table();
  for (const Row& row : kRows) {
    if (!strstr(row.name, wanted)) continue;
    bench::arrange_registrations(row.registrations);
    bench::measure(row.name, row.floor, row.own, row.calls, effort);
  }
  return 0;
}
