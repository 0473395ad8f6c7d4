# The targets of the library, and the flags that all our targets are built with.
#
#   velagnss_objects   all sources, compiled once
#   velagnss           the shared library, for hosts; exports only what is marked VELAGNSS_API
#   velagnss_static    the same objects as an archive, for hosts that want a single file; gives tests access to symbols
#                      that are not exported

include(GenerateExportHeader)
include(VelagnssHardening)

# Flags for our own code, never passed on to projects that link with the library.
add_library(velagnss_flags INTERFACE)
target_compile_options(velagnss_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast -Wnon-virtual-dtor
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # false alarms of g++ 12 about "literal" + std::string (GCC bug 105651)
  -Werror
  -ffp-contract=off)  # no fused multiply-add: the same bits with every compiler and processor
if(VELAGNSS_SANITIZE)
  target_compile_options(velagnss_flags INTERFACE
    -fsanitize=${VELAGNSS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # false alarms in instrumented code, in <regex> for one
  target_link_options(velagnss_flags INTERFACE -fsanitize=${VELAGNSS_SANITIZE})
endif()
velagnss_harden(velagnss_flags)

add_library(velagnss_objects OBJECT)
target_link_libraries(velagnss_objects PRIVATE $<BUILD_INTERFACE:velagnss_flags>)
target_compile_features(velagnss_objects PUBLIC cxx_std_20)
# No function of ours is replaced at load time. Without this, g++ may not even inline an exported one in its own file.
target_compile_options(velagnss_objects PRIVATE -fno-semantic-interposition)
if(VELAGNSS_SANITIZE)
  target_compile_options(velagnss_objects PRIVATE -O1)  # the tests run it most; it takes the program twice as long to compile
endif()
target_compile_definitions(velagnss_objects PRIVATE velagnss_EXPORTS)
target_include_directories(velagnss_objects PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}>)
set_target_properties(velagnss_objects PROPERTIES
  CXX_EXTENSIONS OFF
  POSITION_INDEPENDENT_CODE ON
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON)

add_library(velagnss SHARED)
add_library(velagnss::velagnss ALIAS velagnss)
target_link_libraries(velagnss PRIVATE $<BUILD_INTERFACE:velagnss_objects> $<BUILD_INTERFACE:velagnss_flags>)
target_compile_features(velagnss PUBLIC cxx_std_17)  # what an installed header may use
target_link_options(velagnss PRIVATE -Wl,-Bsymbolic-functions)  # calls within the library go straight to its own functions
set_target_properties(velagnss PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  VERIFY_INTERFACE_HEADER_SETS ON)
# Every public class needs this header, so it is the place to say what would otherwise be a hundred errors.
set(velagnss_least_standard [[
#if __cplusplus < 201703L && !(defined(_MSVC_LANG) && _MSVC_LANG >= 201703L)
#error "velagnss needs C++17: compile with -std=c++17 or later"
#endif
]])
generate_export_header(velagnss CUSTOM_CONTENT_FROM_VARIABLE velagnss_least_standard EXPORT_MACRO_NAME VELAGNSS_API EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/velagnss_export.h)
# Two sets, because the base directories of one set must not nest.
target_sources(velagnss PUBLIC
  FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
  FILE_SET generated TYPE HEADERS BASE_DIRS ${PROJECT_BINARY_DIR} FILES ${PROJECT_BINARY_DIR}/velagnss_export.h)

add_library(velagnss_static STATIC)
add_library(velagnss::velagnss_static ALIAS velagnss_static)
target_link_libraries(velagnss_static PRIVATE $<BUILD_INTERFACE:velagnss_objects>)
target_compile_features(velagnss_static PUBLIC cxx_std_17 INTERFACE $<BUILD_INTERFACE:cxx_std_20>)
target_include_directories(velagnss_static INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}>)
set_target_properties(velagnss_static PROPERTIES OUTPUT_NAME velagnss)  # -lvelagnss finds either

# Sources and headers of one directory. Public headers are installed and compiled alone; internal ones are neither.
function(velagnss_sources)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "PUBLIC_HEADERS;INTERNAL_HEADERS;SOURCES")
  list(TRANSFORM arg_PUBLIC_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(TRANSFORM arg_INTERNAL_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(velagnss_objects PRIVATE ${arg_SOURCES} ${arg_INTERNAL_HEADERS})
  target_sources(velagnss PUBLIC FILE_SET HEADERS FILES ${arg_PUBLIC_HEADERS})
endfunction()
