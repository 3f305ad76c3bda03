// The modem's side of a pseudo-terminal: hears commands, says answers in the wanted pieces.
#pragma once

#include <csignal>
#include <cstddef>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "tools/modem/options.h"

namespace modem {

// Until one of these comes, a wait ends with time, input or the end of the run.
void install_stop_signals();
bool stopped();

class Line {
 public:
  explicit Line(const Options& options) : options_(options) {}
  ~Line();
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  // Makes the pseudo-terminal, prints its name, makes the link. False: told on standard error.
  bool open();

  // A command without its end, or null at the end of the run.
  const char* hear();

  void begin_answer(int split_at);  // 0: in one piece
  void say(const char* bytes, size_t length);
  void say(const char* text);
  void pause(int milliseconds);
  void finish_answer();

  bool ignored() const { return ignored_; }  // a pause was not ended: nobody reads
  int longest_answer() const { return longest_answer_; }

  // Waits, for a while, until what was said has been read.
  void linger();

 private:
  bool make_terminal();
  bool make_link();
  void flush();
  bool wait_for_step() const;
  void forget_steps() const;
  void say_byte(char c);

  const Options& options_;
  fairlead::Descriptor modem_;
  fairlead::Descriptor device_;  // held open, so that the line outlives its users
  fairlead::PathText name_;
  bool linked_ = false;

  char heard_[4096];
  size_t heard_length_ = 0;
  size_t heard_next_ = 0;
  fairlead::FixedText<4096> command_;

  char pending_[4096];
  size_t pending_length_ = 0;
  int split_at_ = 0;
  int said_ = 0;
  int longest_answer_ = 0;
  bool unheard_ = false;  // something was sent since the last pause
  bool ignored_ = false;
};

}  // namespace modem
