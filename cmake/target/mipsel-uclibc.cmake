# 32-bit MIPS, little endian, uClibc-ng.
set(FAIRLEAD_TARGET mipsel-uclibc)
set(FAIRLEAD_REPLACEMENTS uclibc)
include(${CMAKE_CURRENT_LIST_DIR}/mipsel-sysroot.cmake)
