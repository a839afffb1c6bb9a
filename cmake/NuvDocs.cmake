# The API reference: Doxygen over the public headers, HTML into <build>/docs/html. The target
# `docs` builds it; a test builds it too, so an undocumented public function or class fails
# the suite (the configuration turns warnings into errors).
find_program(DOXYGEN_EXECUTABLE doxygen)
if(NOT DOXYGEN_EXECUTABLE)
    message(STATUS "doxygen not found: no target docs")
    return()
endif()
set(NUV_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${NUV_DOCS_DIR}/Doxyfile @ONLY)
add_custom_target(docs COMMAND ${DOXYGEN_EXECUTABLE} ${NUV_DOCS_DIR}/Doxyfile
                  WORKING_DIRECTORY ${NUV_DOCS_DIR}
                  COMMENT "API reference in ${NUV_DOCS_DIR}/html/index.html" VERBATIM)
if(NUV_BUILD_TESTS AND NUV_BUILD_DOCS_TEST)
    add_test(NAME Docs.ReferenceWithoutWarnings
             COMMAND ${DOXYGEN_EXECUTABLE} ${NUV_DOCS_DIR}/Doxyfile WORKING_DIRECTORY ${NUV_DOCS_DIR})
endif()
