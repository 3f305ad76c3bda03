/* bind_adapter OBJECT ADAPTER - lets the adapter /prj/ADAPTER.adp (or .ash) serve the object, in
 * place of whatever the project tree has for it.
 * bind_adapter OBJECT - takes the binding back, and those of the objects below it. */
#include <stdio.h>

#include "fairlead/adp.h"

static int bind_object(const char* object, const char* adapter) {
  if (DynAdpCreate(object, adapter)) return 0;
  fprintf(stderr, "bind_adapter: %s could not be bound to %s; is there a /prj/%s.adp or .ash?\n",
          object, adapter, adapter);
  return 1;
}

static int unbind_object(const char* object) {
  if (DynAdpDelete(object)) return 0;
  fprintf(stderr, "bind_adapter: %s is not bound\n", object);
  return 1;
}

int main(int argc, char** argv) {
  if (argc == 3) return bind_object(argv[1], argv[2]);
  if (argc == 2) return unbind_object(argv[1]);
  fprintf(stderr, "usage: bind_adapter OBJECT [ADAPTER]\n");
  return 2;
}
