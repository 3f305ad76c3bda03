/* glibc.h - included before everything else. Debian's C++ headers are configured for glibc; this is
 * what they take from it without asking. */
#ifdef __cplusplus
#define __GLIBC_PREREQ(major, minor) 0
#define __locale_t locale_t
#include <bits/c++config.h>
/* Clocks of waits that only glibc has. */
#undef _GLIBCXX_USE_PTHREAD_COND_CLOCKWAIT
#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
#undef _GLIBCXX_USE_PTHREAD_RWLOCK_CLOCKLOCK
#endif
