# `vellux_flags`: warnings, hardening, and the sanitizers a preset asks for. Every target of ours links it, by way of
# `vellux_core` or by itself; nothing is set for the whole project. Flags that a compiler or linker does not know are
# left out, and what it or the environment (CXXFLAGS, LDFLAGS) sets already is never replaced by something weaker.

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)

option(VELLUX_WERROR "Treat warnings as errors" OFF)
set(VELLUX_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")

add_library(vellux_flags INTERFACE)

# vellux_compile_flag(FLAG) : adds it where the compiler knows it.
function(vellux_compile_flag flag)
  string(MAKE_C_IDENTIFIER "VELLUX_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    target_compile_options(vellux_flags INTERFACE ${flag})
  endif()
endfunction()

# vellux_link_flag(FLAG) : adds it where the linker knows it.
function(vellux_link_flag flag)
  string(MAKE_C_IDENTIFIER "VELLUX_HAS_${flag}" known)
  check_linker_flag(CXX ${flag} ${known})
  if(${known})
    target_link_options(vellux_flags INTERFACE ${flag})
  endif()
endfunction()

# vellux_unless_defined(CONDITION RESULT) : sets RESULT if an optimised build meets no such macro. It looks again when
# the flags have changed.
function(vellux_unless_defined condition result)
  string(MD5 flags "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_RELEASE} ${CMAKE_BUILD_TYPE}")
  string(APPEND result _${flags})
  set(CMAKE_TRY_COMPILE_CONFIGURATION ${CMAKE_BUILD_TYPE})
  set(CMAKE_REQUIRED_FLAGS -O2) # some compilers fortify by themselves, but only then
  check_cxx_source_compiles("#if ${condition}\n#error there already\n#endif\nint main() {}" ${result})
  set(${ARGV1} "${${result}}" PARENT_SCOPE)
endfunction()

foreach(flag -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wthread-safety)
  vellux_compile_flag(${flag})
endforeach()
if(VELLUX_WERROR)
  target_compile_options(vellux_flags INTERFACE -Werror)
endif()

# Position-independent executables, read-only relocations bound at start, stack protection.
check_pie_supported()
set_target_properties(vellux_flags PROPERTIES INTERFACE_POSITION_INDEPENDENT_CODE ON)
foreach(flag LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  vellux_link_flag(${flag})
endforeach()
vellux_compile_flag(-fstack-clash-protection)
vellux_unless_defined("defined __SSP_STRONG__ || defined __SSP_ALL__" VELLUX_SETS_STACK_PROTECTOR)
if(VELLUX_SETS_STACK_PROTECTOR)
  vellux_compile_flag(-fstack-protector-strong)
endif()
target_compile_definitions(vellux_flags INTERFACE $<$<NOT:$<CONFIG:Release>>:_GLIBCXX_ASSERTIONS>)

if(VELLUX_SANITIZE)
  set(sanitize -fsanitize=${VELLUX_SANITIZE})
  target_compile_options(vellux_flags INTERFACE ${sanitize} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vellux_flags INTERFACE ${sanitize})
else()
  # Fortified calls need an optimised build, and get in the way of sanitizers.
  vellux_unless_defined("defined _FORTIFY_SOURCE" VELLUX_SETS_FORTIFY_SOURCE)
  if(VELLUX_SETS_FORTIFY_SOURCE)
    target_compile_definitions(vellux_flags INTERFACE
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
  endif()
endif()
