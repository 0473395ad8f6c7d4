# Flags that make an attack on a fault harder, and those that keep the build's place out of what is built.
#
# Only in optimised builds: _FORTIFY_SOURCE needs optimisation, and the sanitizers look closer than any of these.

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)  # the length of an absolute path would stay in the installed program

set(velagnss_optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)

# velagnss_compile_hardened(<target> <scope> <flag>...): flags for optimised code, those that the processor has.
function(velagnss_compile_hardened target scope)
  foreach(flag ${ARGN})
    string(MAKE_C_IDENTIFIER velagnss_has${flag} has)
    check_cxx_compiler_flag(${flag} ${has})
    if(${has} AND NOT VELAGNSS_SANITIZE)
      target_compile_options(${target} ${scope} $<${velagnss_optimised}:${flag}>)
    endif()
  endforeach()
endfunction()

# velagnss_harden(<interface target>)
function(velagnss_harden target)
  # Paths of messages and debug information are relative to the project.
  target_compile_options(${target} INTERFACE
    $<${velagnss_optimised}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
    $<${velagnss_optimised}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
  if(VELAGNSS_SANITIZE)
    return()
  endif()
  target_compile_options(${target} INTERFACE
    $<${velagnss_optimised}:-U_FORTIFY_SOURCE> $<${velagnss_optimised}:-D_FORTIFY_SOURCE=2>)
  velagnss_compile_hardened(${target} INTERFACE -fstack-clash-protection -fcf-protection)
  # Nothing is writable that need not be once a program runs; its stack is never executable.
  target_link_options(${target} INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:--as-needed)
endfunction()

# velagnss_protect_stack(<target>): a guard value in each frame with an array. The program has it; the library does not:
# there it cost 3 % of the time of the NMEA benchmarks, 2.8 % more instructions from bytes to decoded records. The
# library's arrays are held by its tests under the address sanitizer.
function(velagnss_protect_stack target)
  velagnss_compile_hardened(${target} PRIVATE -fstack-protector-strong)
endfunction()
