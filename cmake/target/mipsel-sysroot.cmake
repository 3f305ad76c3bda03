# What the C libraries for 32-bit little-endian MIPS beside glibc share: Debian's compiler for glibc, turned to the one that
# tools/sysroot has put into build/sysroot/FAIRLEAD_TARGET. FAIRLEAD_REPLACEMENTS holds what libstdc++'s headers, which are
# made for glibc, need there; FAIRLEAD_CPU what the compiler is told of the processor. There is no libstdc++ for these, so
# nothing here can link GoogleTest.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mipsel)
set(CMAKE_C_COMPILER mipsel-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER mipsel-linux-gnu-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # the C++ driver asks for libstdc++

get_filename_component(source_root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(sysroot ${source_root}/build/sysroot/${FAIRLEAD_TARGET})
if(NOT EXISTS ${sysroot}/ready)
  message(FATAL_ERROR "no C library for ${FAIRLEAD_TARGET} yet: run tools/sysroot ${FAIRLEAD_TARGET}")
endif()

execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
  OUTPUT_VARIABLE gcc_include OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(libc_headers "-isystem ${sysroot}/headers -isystem ${gcc_include}")
set(cxx_headers /usr/mipsel-linux-gnu/include/c++/12)
set(replacements ${CMAKE_CURRENT_LIST_DIR}/${FAIRLEAD_REPLACEMENTS})
set(CMAKE_C_FLAGS_INIT "${FAIRLEAD_CPU} -nostdinc ${libc_headers}")
string(CONCAT CMAKE_CXX_FLAGS_INIT "${FAIRLEAD_CPU} -nostdinc -nostdinc++ -include ${replacements}/glibc.h "
  "-isystem ${replacements} -isystem ${cxx_headers} -isystem ${cxx_headers}/mipsel-linux-gnu ${libc_headers}")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-specs=${sysroot}/gcc.specs")
endforeach()

set(CMAKE_FIND_ROOT_PATH ${sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
