# Installation in three components, which are also the Debian packages:
#
#   library        the shared library, for programs at run time
#   development    headers, archive, CMake package, pkg-config file, documents and examples
#   program        velagnss, its man page, completions and documents (by apps/)

include(CMakePackageConfigHelpers)

# The documents as they lie in the source tree, so that their links to each other hold. For developers and for users of
# the program alike: either package may be the only one.
function(velagnss_install_documents component)
  foreach(name README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md)
    install(FILES ${PROJECT_SOURCE_DIR}/${name} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT ${component})
  endforeach()
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT ${component} FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.cpp" PATTERN "*.service" PATTERN "*.rules"
    PATTERN "*.png" PATTERN "*.svg" PATTERN "*.conf" PATTERN "*.yaml")
endfunction()
velagnss_install_documents(development)

set(velagnss_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/velagnss)
set(velagnss_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/velagnss)
# A host may use either spelling: <velagnss/framing/FrameRecognizer.h>, or "framing/FrameRecognizer.h", which the headers
# themselves use.
foreach(target velagnss velagnss_static)
  target_include_directories(${target} INTERFACE
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}> $<INSTALL_INTERFACE:${velagnss_include_dir}>)
endforeach()
install(TARGETS velagnss velagnss_static EXPORT velagnssTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  FILE_SET HEADERS DESTINATION ${velagnss_include_dir} COMPONENT development
  FILE_SET generated DESTINATION ${velagnss_include_dir} COMPONENT development)
install(EXPORT velagnssTargets NAMESPACE velagnss:: DESTINATION ${velagnss_cmake_dir} COMPONENT development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/velagnssConfig.cmake.in
  ${PROJECT_BINARY_DIR}/velagnssConfig.cmake INSTALL_DESTINATION ${velagnss_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velagnssConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velagnssConfig.cmake ${PROJECT_BINARY_DIR}/velagnssConfigVersion.cmake
  DESTINATION ${velagnss_cmake_dir} COMPONENT development)

# The file derives its prefix from its own location, so `cmake --install --prefix` and packages can choose another one.
file(RELATIVE_PATH velagnss_prefix_of_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/velagnss.pc.in ${PROJECT_BINARY_DIR}/velagnss.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velagnss.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
