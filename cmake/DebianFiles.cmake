# What a Debian package needs and other installations do not: documents under the name of the package, compressed man
# pages, no library search path in the program. CPack runs this after staging the components and before packing them.

set(package_library ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME})
set(package_development ${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
set(package_program ${CPACK_DEBIAN_PROGRAM_PACKAGE_NAME})
find_program(gzip gzip REQUIRED)
execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C date -u -R -d ${CPACK_VELAGNSS_RELEASE_DATE}
  OUTPUT_VARIABLE release_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

function(compress)
  execute_process(COMMAND ${gzip} -9 --force --no-name ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component ${CPACK_COMPONENTS_ALL})
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
  set(documents ${root}/share/doc/${package_${component}})
  if(EXISTS ${root}/share/doc/velagnss AND NOT EXISTS ${documents})
    file(RENAME ${root}/share/doc/velagnss ${documents})
  endif()
  # A package has one prefix. Elsewhere the file finds its own, which shows in the paths that pkg-config prints.
  file(GLOB pkg_config_file ${root}/lib/*/pkgconfig/velagnss.pc ${root}/lib/pkgconfig/velagnss.pc)
  if(pkg_config_file)
    file(READ ${pkg_config_file} contents)
    string(REGEX REPLACE "^prefix=[^\n]*" "prefix=/usr" contents "${contents}")
    file(WRITE ${pkg_config_file} "${contents}")
  endif()
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/debian/copyright DESTINATION ${documents})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${documents}/changelog @ONLY)
  compress(${documents}/changelog)
  file(GLOB pages ${root}/share/man/man*/*.[1-8])
  if(pages)
    compress(${pages})
  endif()
  if(EXISTS ${root}/bin/velagnss)
    file(RPATH_REMOVE FILE ${root}/bin/velagnss)
  endif()
  execute_process(COMMAND find ${root} -type d -exec chmod 755 {} + COMMAND_ERROR_IS_FATAL ANY)  # independent of the umask
endforeach()
