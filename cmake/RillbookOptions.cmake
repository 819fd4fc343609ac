option(RILLBOOK_TESTS "Build the tests" ON)
option(RILLBOOK_BENCH "Build the benchmarks" OFF)
option(RILLBOOK_WERROR "Treat warnings as errors" OFF)
option(RILLBOOK_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

add_library(rillbook_options INTERFACE)
target_compile_features(rillbook_options INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
target_include_directories(rillbook_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_definitions(rillbook_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_KEYWORDS)
target_compile_options(rillbook_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual $<$<BOOL:${RILLBOOK_WERROR}>:-Werror>)
if(RILLBOOK_SANITIZE)
  target_compile_options(rillbook_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(rillbook_options INTERFACE -fsanitize=address,undefined)
endif()
