/* use_uii.c - interface identifiers: each form read, and one put together. */
#include "check.h"
#include "fairlead/talk.h"
#include "fairlead/uii.h"

void use_uii(void) {
  uii_t* uii = UiiCreate("net/wan.connect[fast,2]");
  CHECK(uii && uii->kind == 1);
  CHECK_TEXT("wan", UiiObject(uii, -1));
  CHECK_TEXT("connect", UiiInterface(uii));
  CHECK(UiiParamCount(uii) == 2);
  CHECK_TEXT("fast", UiiParamGetS(uii, 1));
  UiiFree(uii);

  uii = UiiFormat("net/%s:lan/ip=%d.%d", "wan", 10, 1);
  CHECK(uii && uii->kind == 3);
  CHECK_TEXT("lan/ip", UiiConfigString(uii));
  CHECK_TEXT("10.1", UiiValueString(uii));
  CHECK_TEXT("10.1", RenderString(UiiValueTalk(uii)));
  UiiFree(uii);

  char text[64];
  CHECK_TEXT("net/wan.set[1]", UiiAssembly("net/wan", "set", "1", text, sizeof text));
}
