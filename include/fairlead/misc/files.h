/* files.h - small files, flash partitions, and the files behind shared memory.
 *
 * What has a lock takes it on the whole file with lock_open: read locks are shared, write locks
 * exclusive, and one second is all it waits, with errno EBUSY afterwards. The asymmetries are
 * wanted: write_int and file_copy take no lock, write_string empties the file before it has its
 * lock. Closing ends all locks the process has on the same file, so a file that is locked for long
 * must not be read with these.
 * No call waits for the other end of a FIFO, except for sm_open when its flags say so: such a file
 * reads as empty, takes what its pipe holds, or fails with ENXIO.
 * Threads: not guarded; read_string has a static buffer, and waits change the signal state as
 * process.h says. Fork: nothing is kept open. All descriptors are close-on-exec. Nothing here logs.
 */
#ifndef FAIRLEAD_MISC_FILES_H
#define FAIRLEAD_MISC_FILES_H

#include <fcntl.h>
#include <stdint.h>
#include <sys/types.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* The decimal number a file begins with; at most 39 characters of it are read, under a read lock.
 * Blanks and a sign may lead, any text may follow; a file that begins with no number gives 0. A
 * number beyond the range of int is INT_MAX or INT_MIN.
 * errno is 0 on success. 0 with errno: EINVAL path null or empty | ENODATA empty file | EBUSY
 * locked | as open(2) or read(2) leave it. */
int read_int(const char* path);

/* Writes a number, in decimal and without a line end, as the whole content of a file; a missing one
 * is created with mode 0644. Takes no lock.
 * Returns the number of characters written, or -1 with errno: EINVAL path null or empty | as
 * open(2) or write(2) leave it. */
int write_int(const char* path, uint32_t value);

/* The first size - 1 bytes of a file, in one read under a read lock, ended with NUL. With buffer
 * null, size means nothing and the text, up to 10239 bytes, lies in a static buffer that the next
 * such call overwrites.
 * Returns the buffer, or null with errno: EINVAL path null or empty, or a buffer with size below 1
 * | ENODATA empty file, or size 1 | EBUSY locked | as open(2) or read(2) leave it. The caller's
 * buffer is untouched then. */
char* read_string(const char* path, char* buffer, int size);

/* Makes a printf-style text of any length the whole content of a file; a missing one is created
 * with mode 0644. The file is emptied when it is opened, before the write lock is granted: a text
 * that can't be written leaves it empty.
 * Returns the number of bytes written, fewer than the text has when the disk is full; -1 with
 * errno: EINVAL path null or empty, or format null | EBUSY locked | ENOMEM | as the formatter,
 * open(2) or write(2) leave it. A text that can't be formatted leaves the file alone. */
int write_string(const char* path, const char* format, ...) __attribute__((format(printf, 2, 3)));

/* The same, but the text goes to the end of what the file holds. */
int append_string(const char* path, const char* format, ...) __attribute__((format(printf, 2, 3)));

/* Compares two files under read locks.
 * Returns 0 when their contents are equal, 1 when they differ at equal sizes; -1, with no errno of
 * its own, when the sizes differ or less can be read than the size promised; -1 with errno: EINVAL
 * a path null or empty | EBUSY locked | as open(2), fstat(2) or read(2) leave it. A file that tells
 * no size, such as those in /proc, counts as empty. */
int file_cmp(const char* a, const char* b);

/* Copies a file without locks, in blocks of 4096 bytes. A missing destination gets the permissions
 * of the source (with the umask), an existing one is emptied and keeps its own; a symbolic link is
 * followed. A file copied onto itself stays as it is, and its size is the result.
 * Returns the number of bytes written, INT_MAX when there are more; -1 with errno: EINVAL a path
 * null | EISDIR source is a directory, and the destination was not touched | ENOSPC a block was
 * cut short, which leaves the part that was copied | as open(2), read(2) or write(2) leave it. */
int file_copy(const char* source, const char* destination);

/* Counts the entries of a directory, without "." and "..".
 * Returns the number, or -1 with errno: EINVAL directory null | as opendir(3) leaves it. */
int dir_sum(const char* directory);

/* Finds the device nodes of the flash partition whose line in /proc/mtd contains `name` anywhere;
 * when there are several, the last one counts. The character node is /dev/mtdN, else /dev/mtd/N,
 * the block node /dev/mtdblockN, else /dev/mtdblock/N. Each output may be null when it is not
 * wanted, else it has at least 32 bytes.
 * Returns 1 when there is such a line and the wanted nodes exist. 0 when a node is missing, its
 * output then holding the second of both paths; 0 with the outputs untouched when no line contains
 * the name, when /proc/mtd can't be opened (errno as open(2) leaves it), or when name is null
 * (errno EINVAL). */
int proc_mtddevice(const char* name, char* character_path, char* block_path);

/* Opens the file behind shared memory, close-on-exec; flags and mode as in open(2).
 * Returns the descriptor, which the caller closes; -1 with errno EINVAL when path is null, or as
 * open(2) leaves it. */
int sm_open(const char* path, int flags, mode_t mode);

/* Removes that file; who has mapped it keeps what is mapped.
 * Returns 0; -1 with errno EINVAL when path is null, or as unlink(2) leaves it. */
int sm_unlink(const char* path);

FAIRLEAD_API_END

#endif
