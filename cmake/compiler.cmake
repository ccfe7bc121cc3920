# Warnings and sanitizers: two interface targets that every layer and test links.

add_library(tidwen_warnings INTERFACE)
add_library(tidwen::warnings ALIAS tidwen_warnings)
target_compile_options(tidwen_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wimplicit-fallthrough -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # False positives of g++ 12 in its own <string> and <variant> with optimization.
  target_compile_options(tidwen_warnings INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()

# Several files of a layer are compiled as one by g++, which takes a third of the time: what they include and
# instantiate is then read and made once. script/compile-for-mac compiles every file by itself. For work on single
# files: cmake --preset dev -DCMAKE_UNITY_BUILD=OFF
if(NOT DEFINED CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(CMAKE_UNITY_BUILD ON)
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # It warns of a local name that another of these files has, too.
  target_compile_options(tidwen_warnings INTERFACE -Wno-shadow)
endif()
set(CMAKE_UNITY_BUILD_BATCH_SIZE 8)

if(TIDWEN_SANITIZE)
  add_compile_options(-fsanitize=${TIDWEN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TIDWEN_SANITIZE})
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
  # The program runs with Full Disk Access: use the compiler's hardening.
  add_compile_options(-D_FORTIFY_SOURCE=2 -fstack-protector-strong)
endif()
