# 32-bit MIPS, little endian, musl.
set(FAIRLEAD_TARGET mipsel-musl)
set(FAIRLEAD_REPLACEMENTS musl)
include(${CMAKE_CURRENT_LIST_DIR}/mipsel-sysroot.cmake)
