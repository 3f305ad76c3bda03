/* The layout of the public records: device software is compiled against it, so a change here is a
 * change of the soname. The first number counts bytes where a pointer has 8 of them, the second
 * where it has 4. */
#include <stddef.h>

#include "fairlead/fairlead.h"

#define EITHER(wide, narrow) (sizeof(void*) == 8 ? (wide) : (narrow))
#define AT(record, field, wide, narrow) \
  _Static_assert(offsetof(record, field) == EITHER(wide, narrow), #record "." #field " has moved")
#define SIZE(record, wide, narrow) \
  _Static_assert(sizeof(record) == EITHER(wide, narrow), #record " has another size")

AT(json_t, type, 0, 0);
AT(json_t, text, 8, 4);
AT(json_t, next, 16, 8);
AT(json_t, previous, 24, 12);
AT(json_t, parent, 32, 16);
AT(json_t, child, 40, 20);
AT(json_t, child_end, 48, 24);
SIZE(json_t, 56, 28);

AT(rcs_t, text, 0, 0);
AT(rcs_t, length, 8, 4);
AT(rcs_t, capacity, 12, 8);
SIZE(rcs_t, 16, 12);

AT(slash_t, count, 0, 0);
AT(slash_t, segment, 8, 4);
AT(slash_t, string, 168, 84);
SIZE(slash_t, 176, 88);

AT(param_entry_t, text, 0, 0);
AT(param_entry_t, talk, 8, 4);
SIZE(param_entry_t, 16, 8);

AT(param_t, string, 0, 0);
AT(param_t, count, 8, 4);
AT(param_t, entry, 16, 8);
SIZE(param_t, 176, 88);

AT(uii_t, text, 0, 0);
AT(uii_t, work, 8, 4);
AT(uii_t, kind, 16, 8);
AT(uii_t, object, 24, 12);
AT(uii_t, interface, 200, 100);
AT(uii_t, parameter, 208, 104);
AT(uii_t, config, 384, 192);
AT(uii_t, value, 560, 280);
AT(uii_t, talk, 568, 284);
SIZE(uii_t, 576, 288);

AT(gvalue_t, fd, 0, 0);
AT(gvalue_t, address, 8, 4);
AT(gvalue_t, path, 16, 8);
SIZE(gvalue_t, 272, 264);

AT(glink_t, next, 0, 0);
AT(glink_t, previous, 8, 4);
SIZE(glink_t, 16, 8);

AT(adp_interface_t, name, 0, 0);
AT(adp_interface_t, function, 8, 4);
AT(adp_interface_t, opt, 16, 8);
AT(adp_interface_t, intro, 24, 12);
SIZE(adp_interface_t, 32, 16);

AT(adp_module_t, references, 0, 0);
AT(adp_module_t, link, 8, 4);
AT(adp_module_t, file, 24, 12);
AT(adp_module_t, project, 280, 268);
AT(adp_module_t, adapter, 344, 332);
AT(adp_module_t, library, 408, 396);
AT(adp_module_t, set, 416, 400);
AT(adp_module_t, get, 424, 404);
AT(adp_module_t, interface_table, 432, 408);
AT(adp_module_t, interface_count, 440, 412);
SIZE(adp_module_t, 448, 416);

AT(adp_t, type, 0, 0);
AT(adp_t, name, 4, 4);
AT(adp_t, file, 260, 260);
AT(adp_t, module, 520, 516);
SIZE(adp_t, 528, 520);

AT(atcmd_t, fd, 0, 0);
AT(atcmd_t, received_length, 4, 4);
AT(atcmd_t, receive_buffer, 8, 8);
AT(atcmd_t, last_acknowledgement, 1032, 1032);
AT(atcmd_t, default_flags, 2056, 2056);
AT(atcmd_t, notify, 2064, 2060);
AT(atcmd_t, parser, 2072, 2064);
AT(atcmd_t, open_mask, 2080, 2068);
AT(atcmd_t, send_mask, 2080 + sizeof(sigset_t), 2068 + sizeof(sigset_t));
AT(atcmd_t, saved_mask, 2080 + 2 * sizeof(sigset_t), 2068 + 2 * sizeof(sigset_t));
SIZE(atcmd_t, 2080 + 3 * sizeof(sigset_t), 2068 + 3 * sizeof(sigset_t));

AT(mac_t, high, 0, 0);
AT(mac_t, low, 4, 4);
SIZE(mac_t, 8, 8);

AT(md5_t, count, 0, 0);
AT(md5_t, state, 8, 8);
AT(md5_t, buffer, 24, 24);
SIZE(md5_t, 88, 88);

/* Constants that end up in compiled programs. */
_Static_assert(JSON_STRING == 0 && JSON_NUMBER == 1 && JSON_OBJECT == 2 && JSON_ARRAY == 3 &&
                   JSON_TRUE == 4 && JSON_FALSE == 5 && JSON_NULL == 6,
               "node kinds");
_Static_assert(JSON_DONE == 1 && JSON_NEED_MORE == 2 && JSON_DONE_AT_END == 3 && JSON_SYNTAX == 4 &&
                   JSON_NO_MEMORY == 6 && JSON_BAD_AFTER_COMMA == 7 && JSON_BAD_STRUCTURE == 8 &&
                   JSON_INTERNAL == 10,
               "node layer results");
_Static_assert(SLASH_MAX == 20 && PARAM_MAX == 20, "record limits");
_Static_assert(ADP_DYN == 1 && ADP_PRJ == 3 && ADP_SHELL == 5 && ADP_PURE == 6,
               "adapter type codes");
_Static_assert(LOG_ERRNO == 0x08 && LOG_NOMEM == 0x10 && LOG_EXIT == 0x20 &&
                   LOG_MODE_SYSLOG == 0x200 && LOG_MODE_CONSOLE == 0x400 &&
                   LOG_MODE_WHERE == 0x1000,
               "level word and mode word");
_Static_assert(ATCMD_TRACE == 2 && ATCMD_ECHO == 4, "flags of an exchange");
