/* process.h - signals, commands, process names and lock files. */
#ifndef FAIRLEAD_MISC_PROCESS_H
#define FAIRLEAD_MISC_PROCESS_H

#include <sys/types.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

typedef void (*signal_function_t)(int);
signal_function_t signal_register(int signal_number, signal_function_t handler);
void signal_handler(int signal_number);
int system_string(const char* format, ...) __attribute__((format(printf, 1, 2)));
int system_call(int seconds, int quiet, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
void init_proc_title(void);
void set_proc_title(void);
int set_proc_name(const char* name);
int get_proc_name(char* buffer);
pid_t lockfd_get(int fd, int type, int start, int whence, int length);
int lockfd_set(int fd, int type, int start, int whence, int length, int seconds);
int lockfd_free(int fd, int type, int start, int whence, int length);
int lock_open(const char* path, int flags, mode_t mode, int seconds);
int lock_close(int fd);
int fd_nonblock(int fd);
int fd_block(int fd);

FAIRLEAD_API_END

#endif
