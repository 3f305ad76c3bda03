/* smoke.h - what the parts of the smoke program share. */
#ifndef SMOKE_H
#define SMOKE_H

#include <stdio.h>
#include <string.h>

#define CHECK(condition) smoke_check(__FILE__, __LINE__, #condition, (condition) != 0)
#define CHECK_TEXT(expected, actual) smoke_check_text(__FILE__, __LINE__, expected, actual)
/* The same for a text that is freed afterwards. */
#define CHECK_OWN_TEXT(expected, actual) smoke_check_own_text(__FILE__, __LINE__, expected, actual)

int smoke_check(const char* file, int line, const char* condition, int holds);
int smoke_check_text(const char* file, int line, const char* expected, const char* actual);
int smoke_check_own_text(const char* file, int line, const char* expected, char* actual);

void smoke_requests(const char* module);
void smoke_state(void);
void smoke_service(void);
void smoke_modem(void);
void smoke_layout(const char* folder);

#endif
