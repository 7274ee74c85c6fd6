# Debian packages from the install rules, one per component:
#
#   libtuskel0     lib    the shared library and its soname link
#   libtuskel-dev  dev    headers, the .so link, pkg-config and CMake files
#   tuskel         tool   the command-line tool and its manual page
#
# Made with `cpack -G DEB` in a build tree configured with
# -DCMAKE_INSTALL_PREFIX=/usr (so the library goes to the multiarch
# directory); the packages always install under /usr. Dependencies on system
# libraries come from dpkg-shlibdeps, those between the three from the
# component relations below.
set(TUSKEL_PACKAGE_MAINTAINER "tuskel maintainers <tuskel-maintainers@example.org>"
  CACHE STRING "Maintainer field of the Debian packages")
set(TUSKEL_PACKAGE_RELEASE 1 CACHE STRING "Debian revision of the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tuskel)
set(CPACK_PACKAGE_VENDOR tuskel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${TUSKEL_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)  # a RelWithDebInfo tree packages as lean as a Release one

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL lib dev)
if(TARGET tuskel_tool)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TUSKEL_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libtuskel.so.0 the tool needs is not installed when its dependencies
# are worked out; the build tree has it. Its package comes from the
# relation to `lib`.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_LIB_PACKAGE_NAME libtuskel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIB_PACKAGE_SECTION libs)
# A shlibs file, so that packages built against this one depend on it.
# (CPack adds the ldconfig calls on install and removal by itself.)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIB_DESCRIPTION "GZIP and ZIP decompression plug-in library
libtuskel is loaded by content scanners and gateways to look inside
GZIP files and ZIP archives held in buffers of their own. Beside that
it offers self-extracting ZIP executables, file type identification,
byte buffers that spill to disk or are capped in size, and byte streams.
It runs on hostile input, from several host threads at once.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libtuskel-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS lib)
set(CPACK_DEBIAN_DEV_DESCRIPTION "GZIP and ZIP decompression plug-in library (development files)
The headers of libtuskel: the host header tuskel/CommonDecompressor.h
and those of the exported C++ classes, with a pkg-config file (tuskel)
and a CMake package (find_package(tuskel), target tuskel::tuskel).")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tuskel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOL_DEPENDS lib)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "safe lister, tester and extractor for GZIP and ZIP archives
tuskel lists, tests, extracts and scans GZIP files, ZIP archives and
self-extracting ZIPs with libtuskel. Extraction never writes outside the
target directory; scan walks into archives inside archives as a content
scanner does, with limits on depth, size and ratio.")

include(CPack)
