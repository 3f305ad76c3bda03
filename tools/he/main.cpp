// he - puts one request to the library and prints the answer.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "fairlead/log.h"
#include "tools/he/answer.h"
#include "tools/he/options.h"
#include "tools/he/reason.h"
#include "tools/he/report.h"
#include "tools/he/request.h"
#include "tools/standard_streams.h"

namespace {

he::Exit finish_output(he::Exit result) {
  const int error = tools::flush_output();
  if (error == 0) return result;
  he::complain("standard output: %s", strerror(error));
  return he::kFailed;
}

he::Exit show(const he::Request& request, int32_t status, talk_t* answer,
              const he::Options& options) {
  if (options.quiet) return status < 0 ? he::kFailed : he::kAnswered;
  const char* problem = he::print_answer(answer, options.indented);
  if (problem) he::complain("%s: the answer cannot be printed: %s", request.asked().text, problem);
  if (status < 0) he::tell_odd_answer(request.asked());
  return finish_output(problem || status < 0 ? he::kFailed : he::kAnswered);
}

he::Exit lack(const he::Asked& asked, int error, bool quiet) {
  const char* mishap = he::mishap(asked, error);
  if (!quiet && mishap) he::tell_mishap(asked, mishap);
  if (!quiet && !mishap) he::tell_nothing(asked);
  return mishap ? he::kFailed : he::kNothing;
}

he::Exit run(const he::Options& options) {
  he::Request request;
  const he::Exit refused = request.read(options);
  if (refused != he::kAnswered) return refused;

  talk_t* out = nullptr;
  const int32_t status = request.ask(&out);
  const int error = errno;
  // A script that answers a read with a code gives status 0 and the code.
  if (out == TALK_DONE) return he::kAnswered;
  if (out == TALK_FAILED || (!out && status < 0)) {
    if (!options.quiet) he::tell_failure(request.asked(), error);
    return he::kFailed;
  }
  if (!out) return lack(request.asked(), error, options.quiet);
  fairlead::OwnedTalk answer(out);
  return show(request, status, out, options);
}

}  // namespace

int main(int argc, char** argv) {
  tools::occupy_closed_standard_descriptors();
  he::Options options;
  if (!he::read_options(argc, argv, options)) return he::kUsage;
  if (options.help) {
    he::print_help();
    return finish_output(he::kAnswered);
  }
  if (options.version) {
    puts("he " FAIRLEAD_VERSION);
    return finish_output(he::kAnswered);
  }
  // Argument zero names the service that runs this request, and so its log lines.
  GlogOpen(argc > 0 && argv[0] ? argv[0] : "he", 0, 0);
  return run(options);
}
