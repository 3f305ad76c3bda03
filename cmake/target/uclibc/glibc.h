/* glibc.h - included before everything else. Debian's C++ headers are configured for glibc; this is
 * what they have found there and uClibc-ng, as configured here, lacks: above all wide characters.
 */
#ifdef __cplusplus
#include <bits/c++config.h>
#undef _GLIBCXX_USE_WCHAR_T
#undef _GLIBCXX_HAVE_WCHAR_H
#undef _GLIBCXX_HAVE_WCTYPE_H
#undef _GLIBCXX_HAVE_MBSTATE_T
#undef _GLIBCXX_USE_TMPNAM
#undef _GLIBCXX_HAVE_AT_QUICK_EXIT
#undef _GLIBCXX_HAVE_QUICK_EXIT
#undef _GLIBCXX_HAVE_TIMESPEC_GET
#undef _GLIBCXX_HAVE_ALIGNED_ALLOC
/* Clocks of waits that only glibc has. */
#undef _GLIBCXX_USE_PTHREAD_COND_CLOCKWAIT
#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
#undef _GLIBCXX_USE_PTHREAD_RWLOCK_CLOCKLOCK
#endif
