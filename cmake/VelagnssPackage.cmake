# Debian packages: `cpack -G DEB` makes one package per installed component.
#
# With the prefix /usr, as in the preset "package", CMake installs libraries in Debian's directory for the architecture.

set(VELAGNSS_MAINTAINER "velagnss maintainers <maintainers@velagnss.invalid>" CACHE STRING
  "Maintainer of the packages: name <address>")

set(CPACK_PACKAGE_CONTACT ${VELAGNSS_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VELAGNSS_RELEASE_DATE ${velagnss_release_date})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)

set(CPACK_COMPONENTS_ALL library development)
if(VELAGNSS_BUILD_APPS)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # our own library; its package is listed below

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvelagnss${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "\
Shared library that finds and checks the frames of eleven protocols
interleaved in a byte stream: RTCM 3, NMEA 0183, and the binary protocol,
sentences and replies of a receiver. Decodes frames into plain records and
calculates with GNSS time and WGS-84 coordinates.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelagnss-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libvelagnss${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "\
Headers of the library, a static library, and the files that CMake and
pkg-config need to find them. The headers need C++17.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME velagnss)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "libvelagnss${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "\
Program that reads the bytes of a receiver from a file or a live port and
shows what they contain: every frame as a JSON object, statistics and damage.
Converts them to tracks (GPX, KML, GeoJSON, CSV), to NMEA 0183 and to RINEX
navigation files, and calculates with coordinates and times.")

include(CPack)
