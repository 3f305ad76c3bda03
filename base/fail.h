// The early return of a refused call: sets errno and gives the failure value.
#pragma once

#include <cerrno>

namespace fairlead {

// Gives the empty value of T: a null pointer, 0, or nothing at all for void.
template <class T>
T fail(int code) {
  errno = code;
  return T();
}

// For functions whose failure value is another one, such as -1.
template <class T>
T fail(int code, T result) {
  errno = code;
  return result;
}

}  // namespace fairlead
