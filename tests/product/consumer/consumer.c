/* consumer.c - a program of somebody else, built against the installed library. */
#include <fairlead/fairlead.h>
#include <stdlib.h>

int main(void) {
  vessel_t* vessel = StringVessel("{\"installed\":\"works\"}");
  const int printed = TalkPrint(vessel);
  TalkFree(vessel);
  return printed ? EXIT_SUCCESS : EXIT_FAILURE;
}
