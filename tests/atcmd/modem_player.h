// The modem player as another process, and a handle on its pseudo-terminal.
#pragma once

#include "atcmd_support.h"

namespace atcmd_test {

inline std::string transcript(const std::string& name) {
  return std::string(TRANSCRIPTS) + "/" + name + ".transcript";
}

// Plays a transcript until its end. With `paced`, a pause of the player ends when the handle has
// seen what was sent before it, instead of after a time.
class Modem {
 public:
  explicit Modem(std::vector<std::string> arguments, bool paced = true) {
    EXPECT_EQ(0, pipe2(steps_, O_CLOEXEC | O_NONBLOCK));
    const int step_fd = steps_[0];
    player_.emplace([&, step_fd] {
      std::vector<std::string> line = {PLAYER, "--link", kLink};
      if (paced) line.insert(line.end(), {"--step", std::to_string(step_fd)});
      line.insert(line.end(), arguments.begin(), arguments.end());
      std::vector<char*> words;
      for (std::string& word : line) words.push_back(word.data());
      words.push_back(nullptr);
      fcntl(step_fd, F_SETFD, 0);
      execv(PLAYER, words.data());
      return 127;
    });
    for (int round = 0; round < 20000 && !fairlead_test::exists(kLink); ++round) usleep(1000);
  }
  ~Modem() {
    close(steps_[0]);
    close(steps_[1]);
  }
  Modem(const Modem&) = delete;
  Modem& operator=(const Modem&) = delete;

  atcmd_t* open(uint32_t flags = ATCMD_ECHO) {
    atcmd_t* atcmd = open_at_once(kLink, 0, nullptr, nullptr, flags);
    if (!atcmd) return nullptr;
    default_parser_ = std::exchange(atcmd->parser, parse_and_step);
    step_to_ = steps_[1];
    return atcmd;
  }

  void send(int signal_number) const { player_->send(signal_number); }
  fairlead_test::Ended wait() { return player_->wait(); }

  static constexpr const char* kLink = "/tmp/modem";

 private:
  static int parse_and_step(atcmd_t* atcmd, const char* command, const char* expect,
                            uint32_t flags) {
    EXPECT_EQ(1, write(step_to_, "x", 1));
    return default_parser_(atcmd, command, expect, flags);
  }

  static inline atcmd_parser_t default_parser_ = nullptr;
  static inline int step_to_ = -1;

  int steps_[2];
  std::optional<fairlead_test::Child> player_;
};

}  // namespace atcmd_test
