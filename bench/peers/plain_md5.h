/* plain_md5.h - MD5 as one writes it down for speed: the peer that the library's own is held to. */
#ifndef PLAIN_MD5_H
#define PLAIN_MD5_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The digest of bytes that lie in memory as a whole. */
void plain_md5(const unsigned char* data, size_t length, unsigned char digest[16]);

#ifdef __cplusplus
}
#endif

#endif
