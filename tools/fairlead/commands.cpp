// The table of commands: the help, the completion and the checks of arguments all read it.
#include "tools/fairlead/commands.h"

#include <algorithm>
#include <cstring>

namespace control {

namespace {

constexpr Command kCommands[] = {
    {"adapter", "list", "[NAME]", 0, "the registered adapters, or those below NAME",
     "fairlead adapter list", adapter_list},
    {"adapter", "bind", "OBJECT ADAPTER", 0,
     "serve OBJECT by PROJECT/NAME until the device restarts",
     "fairlead adapter bind net/wan router/wan", adapter_bind},
    {"adapter", "unbind", "OBJECT", 0, "take a registration back",
     "fairlead adapter unbind net/wan", adapter_unbind},
    {"adapter", "show", "OBJECT", 0, "who serves OBJECT, and its file",
     "fairlead adapter show net/wan", adapter_show},
    {"adapter", "call-list", "OBJECT", 0, "the interfaces OBJECT offers",
     "fairlead adapter call-list net/wan", adapter_call_list},
    {"project", "list", "[PROJECT]", 0, "the projects, or the files of one",
     "fairlead project list router", project_list},
    {"project", "install", "PROJECT", 0, "copy its default settings into the configuration",
     "fairlead project install router", project_install},
    {"project", "uninstall", "PROJECT", 0, "remove its settings from the configuration",
     "fairlead project uninstall router", project_uninstall},
    {"config", "list", "[FOLDER]", 0, "the configuration files", "fairlead config list net",
     config_list},
    {"config", "get", "NAME [PATH]", 0, "a setting, an object inside, or the whole",
     "fairlead config get net/wan dns/first", config_get},
    {"config", "set", "NAME PATH VALUE", 0, "store a text, or an object written as {...}",
     "fairlead config set net/wan mtu 1492", config_set},
    {"config", "delete", "NAME [PATH]", 0, "delete a setting, or the whole object",
     "fairlead config delete net/wan dns/second", config_delete},
    {"service", "list", "", 0, "all services and how they are", "fairlead service list",
     service_list},
    {"service", "info", "NAME", 0, "what a service runs, and whether it lives",
     "fairlead service info ppp", service_info},
    {"service", "pid", "NAME", 0, "the process of a living service", "fairlead service pid ppp",
     service_pid},
    {"service", "start", "NAME OBJECT INTERFACE [PARAMETERS]", 0, "run an interface as a daemon",
     "fairlead service start ppp net/wan dial ppp0,30", service_start},
    {"service", "stop", "NAME", 0, "end the daemon and forget the service",
     "fairlead service stop ppp", service_stop},
    {"service", "reset", "NAME", 0, "end the daemon and start it anew",
     "fairlead service reset ppp", service_reset},
    {"service", "off", "NAME", 0, "leave the daemon alone, but never restart it",
     "fairlead service off ppp", service_off},
    {"service", "check", "", 0, "start every dead service anew", "fairlead service check",
     service_check},
    {"service", "watch", "", kInterval,
     "check again and again, with a growing pause where one keeps dying",
     "fairlead service watch --interval 10", service_watch},
    {"joint", "list", "[OBJECT]", 0, "which events call which interfaces",
     "fairlead joint list net/wan", joint_list},
    {"joint", "create", "OBJECT EVENT TARGET INTERFACE", 0, "let an event call an interface",
     "fairlead joint create net/wan up net/dns restart", joint_create},
    {"joint", "delete", "OBJECT EVENT TARGET [INTERFACE]", 0, "take a joint away",
     "fairlead joint delete net/wan up net/dns restart", joint_delete},
    {"joint", "cast", "OBJECT [EVENT] [DATA]", 0, "fire an event, or all events of OBJECT",
     "fairlead joint cast net/wan up '{\"ip\":\"10.0.0.1\"}'", joint_cast},
    {"value", "list", "", kStore, "the shared values and their sizes", "fairlead value list",
     value_list},
    {"value", "get", "NAME", kStore | kInteger,
     "a shared value, as hexadecimal digits where it is no text",
     "fairlead value get log_level --int", value_get},
    {"value", "set", "NAME VALUE", kStore | kInteger,
     "set a shared value, a text or a number of 32 bits", "fairlead value set wan_state up",
     value_set},
    {"log", "level", "[LEVEL]", 0,
     "show or set the threshold: emerg alert error warn notice info debug",
     "fairlead log level debug", log_level},
    {"log", "mode", "[MODE...]", 0, "show or set where messages go: syslog console where",
     "fairlead log mode syslog where", log_mode},
    {"log", "write", "LEVEL TEXT", 0, "write a message", "fairlead log write notice 'link is up'",
     log_write},
    {"net", "info", "INTERFACE", 0, "addresses and state of a network interface",
     "fairlead net info eth0", net_info},
    {"net", "counters", "INTERFACE", 0, "bytes, packets, errors and drops",
     "fairlead net counters eth0", net_counters},
    {"net", "route", "DESTINATION [NETMASK]", 0, "gateway and interface of a route",
     "fairlead net route 0.0.0.0", net_route},
    {"net", "resolve", "NAME", kTimeout, "the address of a host", "fairlead net resolve localhost",
     net_resolve},
    {"net", "connect", "ADDRESS PORT", kTimeout,
     "whether a port of a host answers, by address or name",
     "fairlead net connect 127.0.0.1 80 --timeout 2", net_connect},
    {"net", "mac", "ADDRESS [AMOUNT]", 0, "a hardware address and its serial form, AMOUNT further",
     "fairlead net mac 00:11:22:33:44:55 1", net_mac},
    {"encode", "md5", "TEXT", 0, "the MD5 digest", "fairlead encode md5 abc", encode_md5},
    {"encode", "base64", "TEXT", kDecode, "base64", "fairlead encode base64 abc", encode_base64},
    {"encode", "url", "TEXT", kDecode, "the form encoding of URLs", "fairlead encode url 'a b/c'",
     encode_url},
    {"encode", "hex", "TEXT", kDecode, "two hexadecimal digits for each byte",
     "fairlead encode hex 616263 --decode", encode_hex},
    {"at", nullptr, "DEVICE COMMAND...", kTimeout | kSpeed | kExpect, "send commands to a modem",
     "fairlead at /dev/ttyUSB2 AT+CSQ", at_command},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

const Command* find_command(const char* noun, const char* verb) {
  for (const Command& command : kCommands)
    if (strcmp(command.noun, noun) == 0 &&
        (!command.verb || (verb && strcmp(command.verb, verb) == 0)))
      return &command;
  return nullptr;
}

bool is_noun(const char* noun) {
  return std::any_of(std::begin(kCommands), std::end(kCommands),
                     [noun](const Command& command) { return strcmp(command.noun, noun) == 0; });
}

ArgumentCount argument_count(const Command& command) {
  ArgumentCount count = {0, 0};
  for (const char* at = command.arguments; *at; ++at) {
    const bool begins = at == command.arguments || at[-1] == ' ';
    if (begins) ++count.most;
    if (begins && *at != '[') ++count.least;
  }
  if (strstr(command.arguments, "...")) count.most = SIZE_MAX;
  return count;
}

std::string_view argument_name(const Command& command, size_t index) {
  const char* at = command.arguments;
  for (; index > 0; --index) at += strcspn(at, " ") + 1;
  at += strspn(at, "[");
  return {at, strcspn(at, " ].")};
}

}  // namespace control
