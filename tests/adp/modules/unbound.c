/* unbound.c - a module that needs a function which nobody has. */
#include "fairlead/fairlead.h"

int32_t nobody_has_this(void);

static int32_t set(const char* object, slash_t* path, talk_t* value) {
  (void)object, (void)path, (void)value;
  return nobody_has_this();
}

adp_set_t net_unbound__set = set;
