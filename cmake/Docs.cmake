# The API reference: `cmake --build <dir> --target docs` runs Doxygen over
# the installed headers and writes HTML to <dir>/docs/html. Any warning, an
# undocumented public class or operation among them, fails the target.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "doxygen not found: no docs target")
  return()
endif()

set(TUSKEL_DOCS_ROOTS ${tuskel_include_dirs})
# Doxygen lists are blank-separated: each path is quoted.
string(REPLACE ";" "\" \"" TUSKEL_DOCS_STRIP "\"${TUSKEL_DOCS_ROOTS}\"")
set(TUSKEL_DOCS_INPUT "\"${PROJECT_SOURCE_DIR}/docs/mainpage.dox\" ${TUSKEL_DOCS_STRIP}")
set(TUSKEL_DOCS_OUTPUT ${PROJECT_BINARY_DIR}/docs)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)

list(TRANSFORM tuskel_include_dirs APPEND "/*.h" OUTPUT_VARIABLE TUSKEL_DOCS_GLOBS)
file(GLOB_RECURSE TUSKEL_DOCS_HEADERS CONFIGURE_DEPENDS ${TUSKEL_DOCS_GLOBS})
# The stamp is written only when Doxygen succeeds, so a failed run is
# repeated by the next build rather than taken as done.
add_custom_command(
  OUTPUT ${TUSKEL_DOCS_OUTPUT}/docs.stamp
  COMMAND ${DOXYGEN_EXECUTABLE} ${PROJECT_BINARY_DIR}/Doxyfile
  COMMAND ${CMAKE_COMMAND} -E touch ${TUSKEL_DOCS_OUTPUT}/docs.stamp
  DEPENDS ${PROJECT_BINARY_DIR}/Doxyfile ${PROJECT_SOURCE_DIR}/docs/mainpage.dox ${TUSKEL_DOCS_HEADERS}
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
  COMMENT "API reference: ${TUSKEL_DOCS_OUTPUT}/html/index.html"
  VERBATIM)
add_custom_target(docs DEPENDS ${TUSKEL_DOCS_OUTPUT}/docs.stamp)
