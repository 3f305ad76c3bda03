#!/bin/sh
# install.sh CMAKE BUILD-FOLDER C-COMPILER C-FLAGS C++-COMPILER C++-FLAGS LIBRARY-ARCHITECTURE: installs the build and uses
# it from a project of its own, in C and in C++, found by CMake and by pkg-config.
set -eux
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER  # a compiler cache cannot be written from here
cmake=$1 build=$2 compiler=$3 flags=$4 cpp_compiler=$5 cpp_flags=$6 architecture=$7
consumer=$(dirname "$0")/consumer

"$cmake" --install "$build" --prefix /tmp/installed >/tmp/install.log
find /tmp/installed -type f | sort

echo "the request tool finds the library beside it:"
/tmp/installed/bin/he 'net:lan/ip=10.0.0.1'
[ "$(/tmp/installed/bin/he net:lan/ip)" = 10.0.0.1 ]

echo "found by CMake:"
"$cmake" -G Ninja -S "$consumer" -B /tmp/by-cmake -DCMAKE_PREFIX_PATH=/tmp/installed -DCMAKE_C_COMPILER="$compiler" \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_COMPILER="$cpp_compiler" -DCMAKE_CXX_FLAGS="$cpp_flags" \
  -DCMAKE_LIBRARY_ARCHITECTURE="$architecture" >/tmp/configure.log || { cat /tmp/configure.log; exit 1; }
"$cmake" --build /tmp/by-cmake >/tmp/build.log || { cat /tmp/build.log; exit 1; }
/tmp/by-cmake/consumer
/tmp/by-cmake/consumer_in_cpp

echo "found by pkg-config:"
PKG_CONFIG_PATH=$(dirname "$(find /tmp/installed -name fairlead.pc)")
export PKG_CONFIG_PATH
[ "$(pkg-config --variable=includedir fairlead)" ] && [ "$(pkg-config --modversion fairlead)" ]
"$compiler" $flags -std=c11 -o /tmp/by-pkg-config "$consumer/consumer.c" $(pkg-config --cflags --libs fairlead)
LD_LIBRARY_PATH=$(pkg-config --variable=libdir fairlead)
export LD_LIBRARY_PATH
/tmp/by-pkg-config
"$cpp_compiler" $cpp_flags -std=c++20 -o /tmp/by-pkg-config "$consumer/consumer_in_cpp.cpp" \
  $(pkg-config --cflags --libs fairlead)
/tmp/by-pkg-config
