/* ctype_base.h - in place of the one for glibc, whose masks musl does not have. <memory> reads this
 * by way of the streams; nothing here uses those. */
#pragma once
namespace std {
struct ctype_base {
  typedef const int* __to_type;
  typedef unsigned short mask;
  static const mask upper = 1, lower = 2, alpha = 4, digit = 8, xdigit = 16, space = 32, print = 64,
                    punct = 128, cntrl = 256, blank = 512, alnum = alpha | digit,
                    graph = alnum | punct;
};
}  // namespace std
