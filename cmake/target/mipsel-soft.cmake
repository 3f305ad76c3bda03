# 32-bit MIPS without floating point, little endian, musl.
set(FAIRLEAD_TARGET mipsel-soft)
set(FAIRLEAD_REPLACEMENTS musl)
set(FAIRLEAD_CPU -msoft-float)
include(${CMAKE_CURRENT_LIST_DIR}/mipsel-sysroot.cmake)
