// The order of what is heard and said.
#include "tools/modem/player.h"

#include <cstdio>
#include <cstring>

#include "tools/modem/report.h"

namespace modem {

bool Player::play() {
  Outcome outcome = Outcome::kGoesOn;
  do {
    outcome = play_round();
    ++round_;
  } while (outcome == Outcome::kGoesOn && rounds_are_left());
  line_.linger();
  return outcome != Outcome::kFailed;
}

void Player::serve() {
  while (const char* command = line_.hear()) {
    const Step* const block = find(command);
    begin_answer(command);
    if (!block) line_.say("\r\nERROR\r\n");
    for (const Step* step = block ? block + 1 : transcript_.end();
         step != transcript_.end() && step->act != Act::kHear; ++step)
      if (take(*step) != Outcome::kGoesOn) return;
    line_.finish_answer();
  }
}

Player::Outcome Player::play_round() {
  echo_ = true;
  for (const Step& step : transcript_) {
    const Outcome outcome = step.act == Act::kHear ? hear(step) : take(step);
    if (outcome != Outcome::kGoesOn) return outcome;
    if (line_.ignored()) {
      complain("%s:%d: nobody reads what was said", transcript_.path(), step.line);
      return Outcome::kFailed;
    }
  }
  line_.finish_answer();
  return Outcome::kGoesOn;
}

Player::Outcome Player::hear(const Step& expected) {
  line_.finish_answer();
  const char* const command = line_.hear();
  if (!command) return Outcome::kStopped;
  if (strlen(command) != expected.length || memcmp(command, expected.text, expected.length) != 0) {
    complain("%s:%d: expected '%.*s', heard '%s'", transcript_.path(), expected.line,
             static_cast<int>(expected.length), expected.text, command);
    return Outcome::kFailed;
  }
  begin_answer(command);
  return Outcome::kGoesOn;
}

Player::Outcome Player::take(const Step& step) {
  switch (step.act) {
    case Act::kWait:
      line_.pause(step.number);
      break;
    case Act::kEcho:
      echo_ = step.number != 0;
      break;
    case Act::kHangUp:
      line_.linger();
      return Outcome::kHungUp;
    default:
      say(step);
  }
  return Outcome::kGoesOn;
}

const Step* Player::find(const char* command) const {
  for (const Step& step : transcript_)
    if (step.act == Act::kHear && step.length == strlen(command) &&
        memcmp(step.text, command, step.length) == 0)
      return &step;
  return nullptr;
}

void Player::begin_answer(const char* command) {
  const int further = options_.split.each ? round_ + 1 : 0;
  line_.begin_answer(options_.split.given ? options_.split.number + further : 0);
  gap_ = -1;
  pass_gap();
  if (options_.echo < 0 ? !echo_ : options_.echo == 0) return;
  line_.say(command);
  line_.say("\r");
  pass_gap();
}

void Player::say(const Step& step) {
  if (step.act == Act::kSay) line_.say("\r\n");
  line_.say(step.text, step.length);
  if (step.act != Act::kBytes) line_.say("\r\n");
  pass_gap();
}

void Player::pass_gap() {
  ++gap_;
  if (gap_ > largest_gap_) largest_gap_ = gap_;
  if (!options_.insert.given) return;
  if (gap_ != (options_.insert.each ? round_ : options_.insert.number)) return;
  line_.say("\r\n");
  line_.say(options_.unsolicited);
  line_.say("\r\n");
}

// Until every answer has been sent in one piece, or without the line: nothing new would come.
bool Player::rounds_are_left() const {
  if (options_.split.each) return round_ + 1 < line_.longest_answer();
  return options_.insert.each && round_ <= largest_gap_;
}

}  // namespace modem
