# Compiler and linker settings: one interface target for all code, one for what ships.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(fairlead_flags INTERFACE)
target_compile_definitions(fairlead_flags INTERFACE _GNU_SOURCE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_compile_options(fairlead_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wformat=2 -Wno-format-nonliteral
  $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>)
if(FAIRLEAD_WERROR)
  target_compile_options(fairlead_flags INTERFACE -Werror)
endif()
if(FAIRLEAD_SANITIZE)
  target_compile_options(fairlead_flags INTERFACE
    -fsanitize=${FAIRLEAD_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(fairlead_flags INTERFACE -fsanitize=${FAIRLEAD_SANITIZE})
  target_compile_definitions(fairlead_flags INTERFACE FAIRLEAD_SANITIZED)
  if(FAIRLEAD_SANITIZE MATCHES address)
    target_compile_definitions(fairlead_flags INTERFACE FAIRLEAD_ADDRESS_SANITIZED)
  endif()
  if(FAIRLEAD_SANITIZE MATCHES undefined AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(fairlead_flags INTERFACE -fno-sanitize=function)   # needs RTTI
  endif()
endif()
if(FAIRLEAD_FUZZ)
  target_compile_options(fairlead_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# libc is all that may be needed at run time: no exceptions, no RTTI, nothing left undefined.
add_library(fairlead_libc_only INTERFACE)
target_compile_options(fairlead_libc_only INTERFACE
  -fvisibility=hidden
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics -fvisibility-inlines-hidden>)
# Symbols are bound at the start and calls inside the library go straight to their target: a forked child would bind each
# one anew, which makes an isolated call 12 percent dearer, and the library is 5 KB smaller.
target_link_options(fairlead_libc_only INTERFACE -static-libgcc LINKER:--as-needed LINKER:-z,relro LINKER:-z,now
  LINKER:-Bsymbolic-functions)
# Each page and each mapping that a start or a forked child touches costs a microsecond or more: calls to libc go through
# the table of addresses alone, and a file has two mappings rather than four, as on MIPS.
target_compile_options(fairlead_libc_only INTERFACE -fno-plt)
target_link_options(fairlead_libc_only INTERFACE LINKER:-z,noseparate-code)
set(FAIRLEAD_SIZE_FLAGS "" CACHE STRING "Further compiler options for what ships")
target_compile_options(fairlead_libc_only INTERFACE ${FAIRLEAD_SIZE_FLAGS})
target_link_options(fairlead_libc_only INTERFACE ${FAIRLEAD_SIZE_FLAGS})
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^mips")
  # Pages of these boards have 4 KB: ld would pad for 64. What it can make read-only at the start is no more than 136 bytes,
  # the GOT not among them, and would cost a page. Procedure descriptors, which strip leaves, are read by nobody.
  target_compile_options(fairlead_libc_only INTERFACE -Wa,-mno-pdr)
  # gcc 12 takes a function it has compiled to spare registers that the start of a MIPS16 function sets.
  target_compile_options(fairlead_libc_only INTERFACE -fno-ipa-ra)
  target_link_options(fairlead_libc_only INTERFACE LINKER:-z,max-page-size=4096 LINKER:-z,norelro)
endif()
if(NOT (FAIRLEAD_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
  target_link_options(fairlead_libc_only INTERFACE LINKER:-z,defs)
endif()

# fairlead_fast(SOURCE...): for these, speed is worth the bytes that -Os would save, but on boards with little flash memory.
function(fairlead_fast)
  if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^mips")
    set_source_files_properties(${ARGN} TARGET_DIRECTORY fairlead
      PROPERTIES COMPILE_OPTIONS "$<$<CONFIG:MinSizeRel>:-O2>")
  endif()
endfunction()
