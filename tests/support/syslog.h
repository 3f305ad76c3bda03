// A real syslog daemon on "/dev/log" of the private device root.
#pragma once

#include <sys/types.h>

#include <string>

namespace fairlead_test {

class Syslog {
 public:
  Syslog();   // returns when the daemon takes messages
  ~Syslog();  // closes this process' connection and ends the daemon
  Syslog(const Syslog&) = delete;
  Syslog& operator=(const Syslog&) = delete;

  // Waits for the first line that contains the piece, and returns it; "" after the time limit. A
  // line reads "Nov 21 05:04:00 HOST FACILITY.PRIORITY IDENT: MESSAGE".
  std::string wait_for(const std::string& piece, int milliseconds = 20000);

  std::string text() const;  // all lines so far

 private:
  pid_t pid_ = -1;
};

}  // namespace fairlead_test
