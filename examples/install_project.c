/* install_project PROJECT... - installs the configuration that comes with each project: every
 * /prj/PROJECT/NAME.cfg becomes the configuration of the object PROJECT/NAME. */
#include <stdio.h>

#include "fairlead/config.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: install_project PROJECT...\n");
    return 2;
  }
  int failures = 0;
  for (int i = 1; i < argc; ++i) {
    if (ConfigInstall(argv[i])) continue;
    fprintf(stderr, "install_project: /prj/%s has no configuration to install\n", argv[i]);
    ++failures;
  }
  return failures ? 1 : 0;
}
