// Letters, digits and white space of ASCII, whatever the locale of the program says.
#pragma once

namespace fairlead {

constexpr char to_upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

constexpr char to_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

constexpr bool is_letter(char c) { return to_upper(c) >= 'A' && to_upper(c) <= 'Z'; }

constexpr bool is_hex_digit(char c) {
  return is_digit(c) || (to_upper(c) >= 'A' && to_upper(c) <= 'F');
}

constexpr bool is_white_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// By hand: the C library's spans lie on pages of their own, which each forked child would touch
// anew.
template <class Char>
constexpr Char* skip_white_space(Char* text) {
  while (is_white_space(*text)) ++text;
  return text;
}
template <class Char>
constexpr Char* skip(Char* text, char unwanted) {
  while (*text == unwanted) ++text;
  return text;
}

// Of a hexadecimal digit.
constexpr int hex_value(char c) { return is_digit(c) ? c - '0' : to_upper(c) - 'A' + 10; }

}  // namespace fairlead
