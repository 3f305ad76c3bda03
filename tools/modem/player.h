// Plays a transcript, once, round after round, or in any order.
#pragma once

#include "tools/modem/line.h"
#include "tools/modem/options.h"
#include "tools/modem/transcript.h"

namespace modem {

class Player {
 public:
  Player(const Options& options, const Transcript& transcript, Line& line)
      : options_(options), transcript_(transcript), line_(line) {}

  // Until the end of the transcript, or of all rounds. False when something else was heard.
  bool play();

  // Answers whatever command comes, until a signal ends it or the modem hangs up.
  void serve();

 private:
  enum class Outcome { kGoesOn, kHungUp, kStopped, kFailed };

  Outcome play_round();
  Outcome hear(const Step& expected);
  Outcome take(const Step& step);
  const Step* find(const char* command) const;
  void begin_answer(const char* command);
  void say(const Step& step);
  void pass_gap();
  bool rounds_are_left() const;

  const Options& options_;
  const Transcript& transcript_;
  Line& line_;
  bool echo_ = true;
  int round_ = 0;
  int gap_ = 0;  // in the answer that is being given
  int largest_gap_ = 0;
};

}  // namespace modem
