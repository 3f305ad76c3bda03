/* tables.c - a module with the interface tables of several adapters, each odd in its own way, and
 * no set or get. */
#include "fairlead/fairlead.h"

static talk_t* first(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return RenderCreate("first");
}

static talk_t* second(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return RenderCreate("second");
}

/* odd/gap: the third record has no name and ends the table. */
static adp_interface_t gap[] = {{"a", first, "x", "y"},
                                {"b", second, NULL, NULL},
                                {NULL, first, NULL, NULL},
                                {"d", first, NULL, NULL},
                                {"e", first, NULL, NULL}};
adp_interface_t* odd_gap__if_array = gap;
int32_t odd_gap__if_size = 5;

/* odd/hole: a record without a function. */
static adp_interface_t hole[] = {
    {"a", first, NULL, NULL}, {"b", NULL, NULL, NULL}, {"c", first, NULL, NULL}};
adp_interface_t* odd_hole__if_array = hole;
int32_t odd_hole__if_size = 3;

/* odd/blank: a record with an empty name, which no member of a listing can have. */
static adp_interface_t blank[] = {
    {"a", first, NULL, NULL}, {"", second, NULL, NULL}, {"c", first, NULL, NULL}};
adp_interface_t* odd_blank__if_array = blank;
int32_t odd_blank__if_size = 3;

/* odd/twice: two records of one name. */
static adp_interface_t twice[] = {
    {"a", first, "one", NULL}, {"b", first, NULL, NULL}, {"a", second, "two", NULL}};
adp_interface_t* odd_twice__if_array = twice;
int32_t odd_twice__if_size = 3;

/* odd/zero: a table that counts none. odd/null: no table. odd/bare: a table without a count. */
adp_interface_t* odd_zero__if_array = gap;
int32_t odd_zero__if_size = 0;
adp_interface_t* odd_null__if_array = 0;
int32_t odd_null__if_size = 1;
adp_interface_t* odd_bare__if_array = gap;
