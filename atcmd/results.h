// What an exchange ends with, and a parser answers.
#pragma once

namespace fairlead::atcmd {

enum Result {
  kPositive = 0,
  kHungUp = 1,
  kIncomplete = 2,  // of a parser only: the exchange goes on
  kTimedOut = 4,
  kNegative = 5,
  kFailed = -1,
  kBadHandle = -2,
};

}  // namespace fairlead::atcmd
