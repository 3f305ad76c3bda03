// The name that the kernel shows for this process.
#include <sys/prctl.h>

#include <cerrno>

#include "base/fail.h"
#include "fairlead/misc/process.h"

extern "C" void init_proc_title(void) {}

extern "C" void set_proc_title(void) {}

extern "C" int set_proc_name(const char* name) {
  return name ? prctl(PR_SET_NAME, name) : fairlead::fail(EINVAL, -1);
}

extern "C" int get_proc_name(char* buffer) {
  return buffer ? prctl(PR_GET_NAME, buffer) : fairlead::fail(EINVAL, -1);
}
