/* encoders.h - MD5 digests, base64, URL encoding, hexadecimal text, letters, a bounded copy.
 *
 * Threads and fork: nothing here has a state of its own. Nothing logs. What is a letter or a digit
 * does not depend on the locale.
 * A null argument is refused with errno EINVAL unless it is said to be welcome. Text that is
 * returned as new belongs to the caller, who releases it with free(3). */
#ifndef FAIRLEAD_MISC_ENCODERS_H
#define FAIRLEAD_MISC_ENCODERS_H

#include <stdint.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* A digest in the making (RFC 1321). It recognises damage, not forgery: MD5 can be attacked. */
typedef struct md5 {
  uint32_t count[2]; /* the bits so far, low word first */
  uint32_t state[4];
  unsigned char buffer[64]; /* bytes that do not fill a block yet */
} md5_t;

/* md5_init begins a digest, md5_update feeds bytes (data may be null when length is 0), md5_final
 * writes the digest and clears the context, so that it tells nothing of what went through it. */
void md5_init(md5_t* context);
void md5_update(md5_t* context, const void* data, unsigned int length);
void md5_final(md5_t* context, unsigned char digest[16]);

/* The pieces these are made of: one block into the state; words to bytes and bytes to words, low
 * byte first, length in bytes, of which length % 4 at the end are left out. */
void md5_transform(uint32_t state[4], const unsigned char block[64]);
void md5_encode(unsigned char* output, const uint32_t* input, unsigned int length);
void md5_decode(uint32_t* output, const unsigned char* input, unsigned int length);

/* 0x80 and then zeros: what fills up the last block. */
/* NOLINTNEXTLINE(readability-identifier-naming,bugprone-dynamic-static-initializers) */
extern const unsigned char md5_padding[64];

/* The base64 form (RFC 4648, with "=" and without line breaks) of the first length bytes, or of the
 * whole text. A zero byte ends the bytes: what may hold one can't be encoded by these.
 * Returns new text; null with errno: EINVAL text null or length below 0 | ENOMEM. */
char* encode64_block(const char* text, int length);
char* base64_encode(const char* text);

/* The bytes behind base64 text, with a zero byte after the last that *length does not count; length
 * may be null. No other character than the 64 is accepted, blanks and line ends included. A text
 * may end in the middle of a group: n characters of it give n - 1 bytes.
 * flags, bit 0: the first "=" ends the text, whatever follows it; without this bit a "=" is as
 * invalid as any other character. base64_decode sets it.
 * Returns a new block; null, with *length untouched, and errno: EINVAL text null or a character
 * invalid | ENOMEM, also when there are more than INT_MAX characters. */
char* decode64_block(const char* text, int* length, int flags);
char* base64_decode(const char* text);

/* Form encoding: letters, digits, "-", "." and "_" stay, a blank becomes "+", each other byte, zero
 * included, "%" and two upper-case digits. result_length, which may be null, tells the length.
 * Returns new text with room for 3 * length characters; null with errno: EINVAL data null or length
 * below 0 | ENOMEM, also when that room is more than INT_MAX. */
char* url_encode(const char* data, int length, int* result_length);

/* The way back, in place: "+" becomes a blank, "%" and two hexadecimal digits within the length the
 * byte, everything else stays, a "%" without two digits included. A NUL is written behind the
 * result, so text has room for length + 1 characters.
 * Returns the new length; 0 with errno EINVAL when text is null or length below 0. */
int url_decode(char* text, int length);

/* Copies at most size - 1 characters and fills the rest of the size bytes with zeros, so that the
 * text always ends. Returns destination; null with errno EINVAL when a pointer is null or size is
 * below 1. */
char* string_copy(char* destination, const char* source, int size);

/* Reads `count` bytes from pairs of hexadecimal digits of either case. The digits are not checked:
 * each character, signed, counts as its upper-case code minus that of "0" when this is below 10,
 * else as its code minus 55. What hex2string has written, whatever the bytes, comes back.
 * Returns count; 0 with errno EINVAL when a pointer is null. */
int string2hex(const char* text, unsigned char* bytes, int count);

/* Writes two characters per byte and a NUL, 2 * count + 1 in all. Bytes are signed, which programs
 * have come to rely on: 0x00 to 0x7F give "00" to "7F", but 0x80 to 0xFF give characters below "0",
 * high and low part each counted down from it: 0xFF "0/", 0x80 "(0".
 * errno EINVAL, and nothing written: a pointer null, or count below 0. */
void hex2string(const char* bytes, char* text, int count);

/* The number that a text begins with, hexadecimal, modulo 2 to the power of 32; 0 without a digit.
 * Two letters are off on purpose, since there are scripts that count with them: "A" is 17 and "a"
 * is 42; "B" to "F" and "b" to "f" are 11 to 15. A null text gives 0 with errno EINVAL. */
uint32_t hexstr2int(const char* text);

/* The 26 letters to upper case, or to lower case, in place. */
void lowtoupp(char* text);
void upptolow(char* text);

FAIRLEAD_API_END

#endif
