/* use_config.c - the configuration store: set, get, list, delete. */
#include "check.h"
#include "fairlead/config.h"
#include "fairlead/talk.h"

void use_config(void) {
  char text[16];
  CHECK(ConfigSetS("net", NULL, "lan/ip", "10.0.0.1") == 1);
  CHECK_TEXT("10.0.0.1", ConfigGetS("net", NULL, "lan/ip", text, sizeof text));

  talk_t* lan = ConfigGet("net", NULL, "lan");
  CHECK_TEXT("10.0.0.1", VesselGetS(lan, "ip"));
  TalkFree(lan);

  vessel_t* list = ConfigList(NULL);
  CHECK_TEXT("/etc/config/net.cfg", VesselGetS(list, "net"));
  TalkFree(list);

  CHECK(ConfigSet("net", NULL, NULL, NULL) == 1);
  CHECK(ConfigGet("net", NULL, NULL) == NULL);
}
