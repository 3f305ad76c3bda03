// Why a request brought no answer, as far as it can be known.
#pragma once

#include "tools/he/request.h"

namespace he {

// Why an adapter could not answer at all; null where nothing is known of that. `error` is errno as
// the request left it.
const char* mishap(const Asked& asked, int error);

void tell_mishap(const Asked& asked, const char* mishap);
void tell_nothing(const Asked& asked);

// `error` is errno as the request left it.
void tell_failure(const Asked& asked, int error);

// An answer that is neither an object nor a text, which the library counts as a failure.
void tell_odd_answer(const Asked& asked);

}  // namespace he
