// Files of every kind, for the places where the library expects one of its own.
#pragma once

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/device_test.h"

namespace fairlead_test {

inline void make_socket(const char* path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) abort();
  close(fd);
}

struct OddFile {
  const char* name;
  void (*make)(const char* path);
};

inline const OddFile kOddFiles[] = {
    {"fifo", [](const char* path) { mkfifo(path, 0777); }},
    {"folder", [](const char* path) { mkdir(path, 0777); }},
    {"full folder", [](const char* path) { put_file(std::string(path) + "/file", "content"); }},
    {"socket", make_socket},
    {"endless file", [](const char* path) { (void)!symlink("/dev/zero", path); }},
    {"nothing", [](const char* path) { (void)!symlink("/dev/null", path); }},
    {"full device", [](const char* path) { (void)!symlink("/dev/full", path); }},
    {"terminal", [](const char* path) { (void)!symlink("/dev/tty", path); }},
    {"dangling link", [](const char* path) { (void)!symlink("/tmp/no/such/file", path); }},
    {"link to itself", [](const char* path) { (void)!symlink(path, path); }},
    {"link to a precious file", [](const char* path) { (void)!symlink("/tmp/precious", path); }},
    {"empty file", [](const char* path) { put_file(path, "", 0777); }},
    {"zeros", [](const char* path) { put_file(path, std::string(1 << 20, '\0'), 0777); }},
    {"noise",
     [](const char* path) { put_file(path, std::string(5000, '\xfe') + "{\"a\":", 0777); }},
};

}  // namespace fairlead_test
