/* files.h - small files, flash partitions and shared memory files. */
#ifndef FAIRLEAD_MISC_FILES_H
#define FAIRLEAD_MISC_FILES_H

#include <stdint.h>
#include <sys/types.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

int read_int(const char* path);
int write_int(const char* path, uint32_t value);
char* read_string(const char* path, char* buffer, int size);
int write_string(const char* path, const char* format, ...) __attribute__((format(printf, 2, 3)));
int append_string(const char* path, const char* format, ...) __attribute__((format(printf, 2, 3)));
int file_cmp(const char* a, const char* b);
int file_copy(const char* source, const char* destination);
int dir_sum(const char* directory);
int proc_mtddevice(const char* name, char* character_path, char* block_path);
int sm_open(const char* path, int flags, mode_t mode);
int sm_unlink(const char* path);

FAIRLEAD_API_END

#endif
