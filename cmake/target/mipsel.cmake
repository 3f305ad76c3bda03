# 32-bit MIPS, little endian, glibc: Debian's g++-mipsel-linux-gnu.
set(FAIRLEAD_TARGET mipsel)
include(${CMAKE_CURRENT_LIST_DIR}/mips-linux-gnu.cmake)
