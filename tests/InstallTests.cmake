# Tests of what leaves the build: the libraries as files, an installation, Debian packages. The scripts are in install/.
set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/install)
set(work ${CMAKE_CURRENT_BINARY_DIR}/install)

# velagnss_install_test(<name> <script> <argument>...)
function(velagnss_install_test name script)
  add_test(NAME install.${name} COMMAND bash ${scripts}/${script} ${ARGN})
endfunction()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")  # compilers differ in what they keep of private constants; packages are g++'s
  velagnss_install_test(symbols check_symbols $<TARGET_FILE:velagnss> ${scripts}/exported-symbols.txt)
endif()
velagnss_install_test(hardening check_hardening $<TARGET_FILE:velagnss> $<TARGET_FILE:velagnss_program>)
velagnss_install_test(prefix check_prefix ${PROJECT_BINARY_DIR} ${work}/prefix)
velagnss_install_test(destdir check_destdir ${PROJECT_BINARY_DIR} ${work}/destdir ${CMAKE_INSTALL_LIBDIR})
velagnss_install_test(packages check_packages ${PROJECT_BINARY_DIR} ${work}/packages)

# A project of somebody else against the installed prefix.
add_test(NAME install.cmake COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test ${scripts} ${work}/foreign
  --build-generator ${CMAKE_GENERATOR}
  --build-options -DCMAKE_PREFIX_PATH=${work}/prefix -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}
  --test-command ${CMAKE_CTEST_COMMAND} --output-on-failure)
velagnss_install_test(pkg_config_shared check_pkg_config ${CMAKE_CXX_COMPILER} ${work}/prefix shared)
velagnss_install_test(pkg_config_static check_pkg_config ${CMAKE_CXX_COMPILER} ${work}/prefix static)
set_tests_properties(install.prefix PROPERTIES FIXTURES_SETUP installed_prefix)
set_tests_properties(install.cmake install.pkg_config_shared install.pkg_config_static PROPERTIES
  FIXTURES_REQUIRED installed_prefix)
# They read or write what the build's one install manifest tells.
set_tests_properties(install.prefix install.destdir install.packages PROPERTIES RESOURCE_LOCK install_manifest)
