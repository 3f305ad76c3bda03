// One row for each command of the control tool, and what a command is given.
#pragma once

#include <cstdint>
#include <span>

namespace control {

enum Exit { kDone = 0, kFailed = 1, kUsage = 2, kNothing = 3 };

struct Options {
  bool json = false;
  bool help = false;
  bool integer = false;
  bool decode = false;
  const char* store = nullptr;
  const char* expect = nullptr;
  int timeout = 5;
  int interval = 5;
  int speed = 0;
};

// The options a command understands besides --json and --help.
enum : uint32_t {
  kInteger = 1,
  kStore = 2,
  kTimeout = 4,
  kInterval = 8,
  kSpeed = 16,
  kExpect = 32,
  kDecode = 64
};

struct Command;

struct Call {
  const Command& command;
  const Options& options;
  std::span<char* const> arguments;

  // Null when it was not given.
  const char* argument(size_t index) const {
    return index < arguments.size() ? arguments[index] : nullptr;
  }
};

struct Command {
  const char* noun;
  const char* verb;       // null: the noun alone is the command
  const char* arguments;  // as the help shows them; those in brackets may be left out
  uint32_t options;
  const char* summary;
  const char* example;
  Exit (*run)(const Call& call);
};

Exit adapter_list(const Call& call);
Exit adapter_bind(const Call& call);
Exit adapter_unbind(const Call& call);
Exit adapter_show(const Call& call);
Exit adapter_call_list(const Call& call);
Exit project_list(const Call& call);
Exit project_install(const Call& call);
Exit project_uninstall(const Call& call);
Exit config_list(const Call& call);
Exit config_get(const Call& call);
Exit config_set(const Call& call);
Exit config_delete(const Call& call);
Exit service_list(const Call& call);
Exit service_info(const Call& call);
Exit service_pid(const Call& call);
Exit service_start(const Call& call);
Exit service_stop(const Call& call);
Exit service_reset(const Call& call);
Exit service_off(const Call& call);
Exit service_check(const Call& call);
Exit service_watch(const Call& call);
Exit joint_list(const Call& call);
Exit joint_create(const Call& call);
Exit joint_delete(const Call& call);
Exit joint_cast(const Call& call);
Exit value_list(const Call& call);
Exit value_get(const Call& call);
Exit value_set(const Call& call);
Exit log_level(const Call& call);
Exit log_mode(const Call& call);
Exit log_write(const Call& call);
Exit net_info(const Call& call);
Exit net_counters(const Call& call);
Exit net_route(const Call& call);
Exit net_resolve(const Call& call);
Exit net_connect(const Call& call);
Exit net_mac(const Call& call);
Exit encode_md5(const Call& call);
Exit encode_base64(const Call& call);
Exit encode_url(const Call& call);
Exit encode_hex(const Call& call);
Exit at_command(const Call& call);

}  // namespace control
