# Installation: library, headers, CMake package and pkg-config file.

include(CMakePackageConfigHelpers)

set(velagnss_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/velagnss)
# Both spellings work for a host: <velagnss/framing/FrameRecognizer.h>, and "framing/FrameRecognizer.h", by which the
# headers include each other.
target_include_directories(velagnss INTERFACE
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}> $<INSTALL_INTERFACE:${velagnss_include_dir}>)
install(TARGETS velagnss EXPORT velagnssTargets
  FILE_SET HEADERS DESTINATION ${velagnss_include_dir}
  FILE_SET generated DESTINATION ${velagnss_include_dir})
install(EXPORT velagnssTargets NAMESPACE velagnss:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/velagnss)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/velagnssConfig.cmake.in
  ${PROJECT_BINARY_DIR}/velagnssConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/velagnss)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velagnssConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velagnssConfig.cmake ${PROJECT_BINARY_DIR}/velagnssConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/velagnss)

configure_file(${PROJECT_SOURCE_DIR}/cmake/velagnss.pc.in ${PROJECT_BINARY_DIR}/velagnss.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velagnss.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
