/* log.h - the log channel. */
#ifndef FAIRLEAD_LOG_H
#define FAIRLEAD_LOG_H

#include <stdint.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

#define LOG_ERRNO 0x08u
#define LOG_NOMEM 0x10u
#define LOG_EXIT 0x20u
#define LOG_MODE_SYSLOG 0x200u
#define LOG_MODE_CONSOLE 0x400u
#define LOG_MODE_WHERE 0x1000u
int GlogOpen(const char* ident, uint32_t mode, uint32_t level);
void GlogClose(void);
void LogWrite(uint32_t word, const char* file, int line, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

FAIRLEAD_API_END

#endif
