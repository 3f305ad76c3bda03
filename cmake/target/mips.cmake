# 32-bit MIPS, big endian, glibc: Debian's g++-mips-linux-gnu.
set(FAIRLEAD_TARGET mips)
include(${CMAKE_CURRENT_LIST_DIR}/mips-linux-gnu.cmake)
