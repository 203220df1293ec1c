# What `cmake --install` installs, in the components that become Debian packages (CPack).
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)

install(TARGETS vexo EXPORT vexo-shared
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvexo0 NAMELINK_COMPONENT libvexo-dev)
install(TARGETS vexo-static EXPORT vexo-static
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvexo-dev)
install(FILES ${VEXO_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT libvexo-dev)
foreach(kind shared static)
  install(EXPORT vexo-${kind} NAMESPACE vexo:: DESTINATION ${package_dir} FILE vexo-${kind}-targets.cmake
    COMPONENT libvexo-dev)
endforeach()

write_basic_package_version_file(vexo-config-version.cmake COMPATIBILITY SameMinorVersion)
# A folder of its own may be moved after the installation, the system's is where it is.
set(VEXO_PC_PREFIX /usr)
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE to_prefix)
  set(VEXO_PC_PREFIX "\${pcfiledir}/${to_prefix}")
endif()
configure_file(packaging/vexo.pc.in vexo.pc @ONLY)
install(FILES packaging/vexo-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/vexo-config-version.cmake
  DESTINATION ${package_dir} COMPONENT libvexo-dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT libvexo-dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "libvexo authors <libvexo@example.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL libvexo0 libvexo-dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# package NAME SECTION DEPENDS KIND
macro(package name section depends kind)
  string(TOUPPER ${name} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  string(CONCAT CPACK_DEBIAN_${upper}_DESCRIPTION "${PROJECT_DESCRIPTION} - ${kind}\n"
    "From a probe's readings of a display panel to correction LUTs; video colour\n"
    "conversion, colorimetry and 3D LUTs, with the same bits on every processor.")
  install(FILES packaging/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${name} EXCLUDE_FROM_ALL)
endmacro()
package(libvexo0 libs "" library)
set(CPACK_DEBIAN_LIBVEXO0_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvexo-dev COMPONENT libvexo-dev
  FILES_MATCHING PATTERN "*.md" PATTERN examples EXCLUDE)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvexo-dev/examples COMPONENT libvexo-dev
  PATTERN CMakeLists.txt EXCLUDE)
package(libvexo-dev libdevel "libvexo0 (= ${PROJECT_VERSION}), libexpat1-dev" "development files")
if(CMAKE_INSTALL_LIBDIR MATCHES "/") # lib/TRIPLET
  set(CPACK_DEBIAN_LIBVEXO0_PACKAGE_MULTIARCH same)
  set(CPACK_DEBIAN_LIBVEXO-DEV_PACKAGE_MULTIARCH same)
endif()
if(VEXO_TOOL)
  list(APPEND CPACK_COMPONENTS_ALL vexo-tools)
  package(vexo-tools utils "" command)
endif()
execute_process(COMMAND gzip -9n INPUT_FILE ${PROJECT_SOURCE_DIR}/packaging/changelog
  OUTPUT_FILE ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
include(CPack)
