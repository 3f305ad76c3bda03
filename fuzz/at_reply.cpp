// A modem's reply that arrives in pieces: the default parser completes it where a plain reading of
// its rules does, and keeps within its buffers.
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstring>

#include "fairlead/atcmd.h"
#include "fuzzing.h"

namespace {

constexpr int kRoom = 1023;
constexpr int kGoOn = 99;  // any result but the four that end an exchange

atcmd_t* handle = nullptr;  // made once: opening takes a second

std::string without_blanks(const std::string& text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

struct Verdict {
  int result;
  std::string acknowledgement;
};

// The reply up to the end of the line that holds a piece of text, without NULs; false where there
// is none.
bool line_with(const std::string& reply, const std::string& piece, std::string& found) {
  const size_t at = reply.find(piece);
  const size_t end = at == std::string::npos ? at : reply.find('\n', at);
  if (end == std::string::npos) return false;
  found = reply.substr(0, end);
  std::erase(found, '\0');
  return true;
}

Verdict expected(std::string reply, const std::string& command, const char* expect, bool echo) {
  reply = without_blanks(reply);
  std::string line;
  if (command.empty()) {
    if (expect && *expect)
      return line_with(reply, expect, line) ? Verdict{0, line} : Verdict{kGoOn, ""};
    return line_with(reply, "ERROR", line) ? Verdict{5, line} : Verdict{0, ""};
  }
  if (echo) {
    const size_t at = reply.find(command);
    if (at == std::string::npos) return {kGoOn, ""};
    reply = without_blanks(reply.substr(at + command.size()));
  }
  const std::string wanted = expect ? expect : "OK";
  const Verdict so_far =
      command.find("ATD") == std::string::npos ? Verdict{kGoOn, ""} : Verdict{0, "OK"};
  if (!wanted.empty() && line_with(reply, wanted, line)) return {0, line};
  if (!wanted.empty() && reply.find(wanted) != std::string::npos) return so_far;
  return line_with(reply, "ERROR", line) ? Verdict{5, line} : so_far;
}

bool ends(int result) { return result == 0 || result == 5 || result == -1 || result == -2; }

void fill(const std::string& received) {
  memset(handle->last_acknowledgement, 0, sizeof handle->last_acknowledgement);
  memcpy(handle->receive_buffer, received.data(), received.size());
  handle->receive_buffer[received.size()] = '\0';
  handle->received_length = static_cast<int>(received.size());
}

void look(const std::string& received, const std::string& command, const char* expect, bool echo) {
  fill(received);
  const int result =
      handle->parser(handle, command.c_str(), expect, echo ? ATCMD_ECHO : ATCMD_TRACE);
  const Verdict verdict = expected(received, command, expect, echo);
  REQUIRE(ends(verdict.result) ? result == verdict.result : !ends(result));
  REQUIRE(handle->received_length >= 0 && handle->received_length <= kRoom);
  REQUIRE(handle->receive_buffer[handle->received_length] == '\0');
  const std::string acknowledged = handle->last_acknowledgement;
  REQUIRE(acknowledged == verdict.acknowledgement);
}

}  // namespace

void fuzzing::prepare() {
  prepare_device();
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) skip("no pseudo-terminals here");
  handle = atcmd_open(ptsname(master), O_RDWR | O_NOCTTY | O_NONBLOCK, 0, nullptr, nullptr, 0);
  REQUIRE(handle);
}

void fuzzing::check(Input input) {
  const unsigned choices = input.byte();
  const std::string command = ExactText(input.line()).get();
  const std::string awaited = ExactText(input.line()).get();
  const char* const expect = choices & 1 ? awaited.c_str() : nullptr;
  const std::string received = input.take(kRoom);
  const size_t step = 1 + (choices >> 2);
  for (size_t length = 1; length < received.size(); length += step)
    look(received.substr(0, length), command, expect, choices & 2);
  if (!received.empty()) look(received, command, expect, choices & 2);
}
