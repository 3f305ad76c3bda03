/* check.h - the few lines that a test in plain C needs. */
#ifndef CHECK_H
#define CHECK_H

#include <stdio.h>
#include <string.h>

extern int failures;

#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                     \
    }                                                                 \
  } while (0)

/* Equal texts; a null text equals nothing. */
#define CHECK_TEXT(expected, actual) check_text(__FILE__, __LINE__, expected, actual)

/* The same for a text that is freed afterwards. */
#define CHECK_OWN_TEXT(expected, actual) check_own_text(__FILE__, __LINE__, expected, actual)

void check_text(const char* file, int line, const char* expected, const char* actual);
void check_own_text(const char* file, int line, const char* expected, char* actual);

void use_adp(const char* module);
void use_atcmd(void);
void use_config(void);
void use_json(void);
void use_log(void);
void use_misc(void);
void use_paths(void);
void use_service(void);
void use_state(void);
void use_talk(void);
void use_uii(void);

#endif
