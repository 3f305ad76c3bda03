# 32-bit MIPS, little endian, musl: Debian's compiler for glibc, turned to the musl that tools/musl-sysroot has fetched.
# There is no libstdc++ for it, so nothing here can link GoogleTest.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mipsel)
set(CMAKE_C_COMPILER mipsel-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER mipsel-linux-gnu-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # the C++ driver asks for libstdc++

get_filename_component(source_root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(sysroot ${source_root}/build/sysroot/mipsel-musl)
if(NOT EXISTS ${sysroot}/complete)
  message(FATAL_ERROR "no musl for mipsel yet: run tools/musl-sysroot")
endif()

execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
  OUTPUT_VARIABLE gcc_include OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(musl_headers "-isystem ${sysroot}/usr/include/mipsel-linux-musl -isystem ${gcc_include}")
set(cxx_headers /usr/mipsel-linux-gnu/include/c++/12)
set(replacements ${CMAKE_CURRENT_LIST_DIR}/musl)
set(CMAKE_C_FLAGS_INIT "-nostdinc ${musl_headers}")
string(CONCAT CMAKE_CXX_FLAGS_INIT "-nostdinc -nostdinc++ -include ${replacements}/glibc.h -isystem ${replacements} "
  "-isystem ${cxx_headers} -isystem ${cxx_headers}/mipsel-linux-gnu ${musl_headers}")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-specs=${sysroot}/gcc.specs")
endforeach()

set(CMAKE_FIND_ROOT_PATH ${sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
