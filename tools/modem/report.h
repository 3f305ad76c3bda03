// What `modem-player` says on standard error.
#pragma once

namespace modem {

// "modem-player: " and the text, as one line.
__attribute__((format(printf, 1, 2))) void complain(const char* format, ...);

}  // namespace modem
