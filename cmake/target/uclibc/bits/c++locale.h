/* c++locale.h - in place of the one for glibc, whose locales uClibc-ng, as configured here, does
 * not have. <memory> reads this by way of the streams; nothing here uses those. */
#pragma once
#define _GLIBCXX_NUM_CATEGORIES 0
namespace std {
typedef int* __c_locale;
int __convert_from_v(const __c_locale&, char* out, int size, const char* format, ...);
}  // namespace std
