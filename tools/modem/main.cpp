// modem-player - plays a modem on a pseudo-terminal, from a transcript.
#include "tools/modem/line.h"
#include "tools/modem/options.h"
#include "tools/modem/player.h"
#include "tools/modem/transcript.h"

int main(int argc, char** argv) {
  enum { kDone, kFailed, kUsage };
  modem::Options options;
  if (!modem::read_options(argc, argv, options)) return kUsage;
  if (options.help) {
    modem::print_help();
    return kDone;
  }
  modem::Transcript transcript;
  if (!transcript.read(options.transcript)) return kFailed;

  modem::install_stop_signals();
  modem::Line line(options);
  if (!line.open()) return kFailed;
  modem::Player player(options, transcript, line);
  if (!options.serve) return player.play() ? kDone : kFailed;
  player.serve();
  return kDone;
}
