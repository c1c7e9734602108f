# The language, the warnings and the sanitizers, the same for all of our own code.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(GNUInstallDirs)

set(STILLWICK_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
option(STILLWICK_FUZZ "Build the fuzz targets (clang only)" OFF)

find_program(STILLWICK_CCACHE ccache)
if(STILLWICK_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${STILLWICK_CCACHE})
endif()

add_library(StillwickOptions INTERFACE)
target_compile_options(StillwickOptions INTERFACE
    -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
# GCC 12 reports false dangling and bound errors from its own headers once sanitizers instrument
# them; the plain builds keep these warnings.
if(STILLWICK_SANITIZE)
    add_compile_options(-fsanitize=${STILLWICK_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${STILLWICK_SANITIZE})
    target_compile_options(StillwickOptions INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
        $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>
        $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds>)
endif()
if(STILLWICK_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
