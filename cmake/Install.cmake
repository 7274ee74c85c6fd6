# What `cmake --install` puts in place: the shared library with its soname
# links, the headers, a pkg-config file and a CMake package exporting
# tuskel::tuskel. Every installed path is relative to the prefix, so an
# installation can be moved (or made with --prefix) and still be found.
# Components: lib (what hosts load), dev (what hosts build with); the tool
# installs as tool. Each becomes a Debian package (Packaging.cmake).
include(CMakePackageConfigHelpers)

set(TUSKEL_INCLUDE_ROOT ${CMAKE_INSTALL_INCLUDEDIR}/tuskel)
set(TUSKEL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tuskel)

target_include_directories(tuskel INTERFACE $<INSTALL_INTERFACE:${TUSKEL_INCLUDE_ROOT}>)
install(TARGETS tuskel EXPORT tuskelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT lib NAMELINK_COMPONENT dev)

# The three include roots of the build merge into one, so the headers
# include each other exactly as they do in the source tree. Hosts need only
# tuskel/CommonDecompressor.h; the rest serves code using the exported
# buffers and streams.
foreach(root IN LISTS TUSKEL_INCLUDE_ROOTS)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${root}/ DESTINATION ${TUSKEL_INCLUDE_ROOT} COMPONENT dev
    FILES_MATCHING PATTERN "*.h")
endforeach()

install(EXPORT tuskelTargets NAMESPACE tuskel:: DESTINATION ${TUSKEL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tuskelConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tuskelConfig.cmake INSTALL_DESTINATION ${TUSKEL_CMAKE_DIR})
# The version file also refuses a library built for another pointer size.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tuskelConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tuskelConfig.cmake ${PROJECT_BINARY_DIR}/tuskelConfigVersion.cmake
  DESTINATION ${TUSKEL_CMAKE_DIR} COMPONENT dev)

# pkg-config finds the prefix from where the .pc file lies.
file(RELATIVE_PATH TUSKEL_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TUSKEL_PC_TO_PREFIX "${TUSKEL_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/tuskel.pc.in ${PROJECT_BINARY_DIR}/tuskel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tuskel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
