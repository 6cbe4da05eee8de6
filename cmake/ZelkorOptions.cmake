# Compiler settings of the project's own targets; nothing here reaches a project that includes this one.

find_package(Boost 1.74 REQUIRED)
find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter)

add_library(zelkor_settings INTERFACE)
target_compile_features(zelkor_settings INTERFACE cxx_std_20)
if(PROJECT_IS_TOP_LEVEL)
  target_compile_options(zelkor_settings INTERFACE -Wall -Wextra -Wpedantic)
endif()

set(ZELKOR_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")
if(ZELKOR_SANITIZE)
  target_compile_options(zelkor_settings INTERFACE -fsanitize=${ZELKOR_SANITIZE} -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
  target_link_options(zelkor_settings INTERFACE -fsanitize=${ZELKOR_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_options(zelkor_settings
                           INTERFACE -fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitize-ignore.txt)
  endif()
endif()
option(ZELKOR_COVERAGE "Build with coverage counters" OFF)
if(ZELKOR_COVERAGE)
  target_compile_options(zelkor_settings INTERFACE --coverage -O0)
  target_link_options(zelkor_settings INTERFACE --coverage)
endif()
