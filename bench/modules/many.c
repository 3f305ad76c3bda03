/* many.c - an adapter with a hundred interfaces that do nothing, for the measurements. */
#include "fairlead/adp.h"

static talk_t* nod(const char* object, param_t* parameters) {
  (void)object;
  (void)parameters;
  return TALK_DONE;
}

#define TEN(tens)                                                                                 \
  {"i" #tens "0", nod, "", ""}, {"i" #tens "1", nod, "", ""}, {"i" #tens "2", nod, "", ""},       \
      {"i" #tens "3", nod, "", ""}, {"i" #tens "4", nod, "", ""}, {"i" #tens "5", nod, "", ""},   \
      {"i" #tens "6", nod, "", ""}, {"i" #tens "7", nod, "", ""}, {"i" #tens "8", nod, "", ""}, { \
    "i" #tens "9", nod, "", ""                                                                    \
  }

static adp_interface_t interfaces[] = {TEN(0), TEN(1), TEN(2), TEN(3), TEN(4),
                                       TEN(5), TEN(6), TEN(7), TEN(8), TEN(9)};

adp_interface_t* bench_many__if_array = interfaces;
int32_t bench_many__if_size = sizeof interfaces / sizeof interfaces[0];
