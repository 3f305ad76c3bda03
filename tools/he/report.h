// What `he` says on standard error, and its exit statuses.
#pragma once

namespace he {

enum Exit { kAnswered = 0, kFailed = 1, kUsage = 2, kNothing = 3 };

// "he: " and the text, as one line.
__attribute__((format(printf, 1, 2))) void complain(const char* format, ...);

// The same with a pointer to the help. Always false.
__attribute__((format(printf, 1, 2))) bool usage_error(const char* format, ...);

}  // namespace he
