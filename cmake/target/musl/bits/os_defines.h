/* os_defines.h - in place of the one for glibc. */
#pragma once
#define __NO_CTYPE 1
#include <features.h>
