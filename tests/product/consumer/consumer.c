/* consumer.c - a program of somebody else, built against the installed library. */
#include <fairlead/fairlead.h>
#include <stdio.h>

int main(void) {
  glink_t list = {0}, element = {0};
  if (GlinkPut(&list, &element) != 1 || GlinkGet(&list) != &element) return 1;
  puts("works");
  return 0;
}
