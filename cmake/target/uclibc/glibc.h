/* glibc.h - included before everything else. Debian's C++ headers are configured for glibc; this is
 * what they have found there and uClibc-ng lacks. */
#ifdef __cplusplus
#include <bits/c++config.h>
#undef _GLIBCXX_HAVE_AT_QUICK_EXIT
#undef _GLIBCXX_HAVE_QUICK_EXIT
#undef _GLIBCXX_HAVE_TIMESPEC_GET
#undef _GLIBCXX_HAVE_ALIGNED_ALLOC
#endif
