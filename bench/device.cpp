#include "device.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "fairlead/fairlead.h"
#include "floors.h"

namespace bench {

namespace {

int syslog_queue = -1;

void put_file(const char* path, const std::string& content, mode_t mode = 0644) {
  FILE* file = fopen(path, "we");
  require(file && fwrite(content.data(), 1, content.size(), file) == content.size() &&
              fclose(file) == 0 && chmod(path, mode) == 0,
          path);
}

// Two kilobytes as a device has them.
std::string configuration() {
  std::string text = R"({"mtu":"1500","dns":{"first":"9.9.9.9","second":"1.1.1.1"},"routes":{)";
  for (int number = 0; text.size() < 1900; ++number)
    text += (number ? ",\"" : "\"") + std::to_string(number) + R"(":{"to":"10.0.)" +
            std::to_string(number) + R"(.0/24","via":"192.168.0.254","metric":"10"})";
  return text + "}}";
}

void open_queue() {
  syslog_queue = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = "/dev/log"};
  require(bind(syslog_queue, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
          "/dev/log");
}

void arrange_joints() {
  for (int number = 0; number < kJointCount; ++number) {
    const std::string interface = {'i', static_cast<char>('0' + number / 10),
                                   static_cast<char>('0' + number % 10)};
    require(JointCreate("bench/wan", "up", "bench/many", interface.c_str()) == 1, "JointCreate");
  }
}

void arrange_values() {
  for (int number = 0; number < kValueCount; ++number)
    require(GvalueSet(nullptr, value_name(number).c_str(), &number, sizeof number) == 1,
            "GvalueSet");
}

}  // namespace

void arrange_device(const char* module_file) {
  if (access("/.device-root", F_OK) != 0) {
    fputs("runs in a private device root only: tools/device-root\n", stderr);
    exit(1);
  }
  require(mkdir("/prj/bench", 0755) == 0 && mkdir(kConfigFolder, 0770) == 0, "mkdir");
  require(symlink(module_file, kModule) == 0 && access(kModule, R_OK) == 0, module_file);
  put_file(kScript, "#!/bin/sh\nprintf '\\001' >&$pipeid\n", 0755);
  put_file(kConfigFile, configuration());
  put_file("/etc/config/bench/short.cfg", "{\"text\":\"" + std::string(189, 'x') + "\"}");
  arrange_joints();
  arrange_values();
  open_queue();
}

void arrange_registrations(int count) {
  unlink(kRegistry);
  if (!count) return;
  std::string text = R"({"bench":{)";
  for (int number = 0; number < count; ++number)
    text += (number ? ",\"object" : "\"object") + std::to_string(number) + "\":\"" + kModule + '"';
  put_file(kRegistry, text + "}}");
}

void drain_syslog() {
  char text[512];
  while (recv(syslog_queue, text, sizeof text, 0) > 0) continue;
}

std::string value_name(int number) { return "value" + std::to_string(number); }

}  // namespace bench
