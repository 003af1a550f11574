# Headers, both libraries, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS zt_base zt_base_static EXPORT zt_base-targets)
install(DIRECTORY include/zt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zt_base)
install(EXPORT zt_base-targets NAMESPACE zt:: DESTINATION ${package_dir})
configure_package_config_file(cmake/zt_base-config.cmake.in zt_base-config.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(zt_base-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/zt_base-config.cmake"
  "${PROJECT_BINARY_DIR}/zt_base-config-version.cmake"
  DESTINATION ${package_dir})

# The prefix is where the file is found, so that an installed tree can be moved as a whole.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH ZT_PC_TO_PREFIX "/${pkgconfig_dir}" "/")
string(REGEX REPLACE "/$" "" ZT_PC_TO_PREFIX "${ZT_PC_TO_PREFIX}")
configure_file(cmake/zt_base.pc.in zt_base.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zt_base.pc" DESTINATION ${pkgconfig_dir})

# The pretty printers go where gdb looks for them when it loads the shared object: under the auto-load
# directory, at the library's whole path. That path is known when the tree is installed, not before.
install(CODE "
  set(place \"${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")
  file(INSTALL \"${PROJECT_SOURCE_DIR}/packaging/gdb/libzt_base-gdb.py\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/\${place}\"
    RENAME libzt_base.so.${PROJECT_VERSION}-gdb.py)")
