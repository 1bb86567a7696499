# Flags of every target: warnings, hardening, and the sanitizers a preset asks for.

option(VELLUX_WERROR "Treat warnings as errors" OFF)
set(VELLUX_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options(-Wthread-safety)
endif()
if(VELLUX_WERROR)
  add_compile_options(-Werror)
endif()

# Position-independent executables, read-only relocations bound at start, stack protection.
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(-fstack-protector-strong -fstack-clash-protection)
add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

if(VELLUX_SANITIZE)
  add_compile_options(-fsanitize=${VELLUX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VELLUX_SANITIZE})
else()
  # Fortified calls need an optimised build, and get in the way of sanitizers.
  add_compile_options(
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
