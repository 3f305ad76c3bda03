/* api.h - what stands around the declarations of every public header: C linkage, visible outside
 * the library. */
#ifndef FAIRLEAD_API_H
#define FAIRLEAD_API_H

#ifdef __cplusplus
#define FAIRLEAD_API_BEGIN \
  extern "C" {             \
  _Pragma("GCC visibility push(default)")
#define FAIRLEAD_API_END        \
  _Pragma("GCC visibility pop") \
  }
#else
#define FAIRLEAD_API_BEGIN _Pragma("GCC visibility push(default)")
#define FAIRLEAD_API_END _Pragma("GCC visibility pop")
#endif

#endif
