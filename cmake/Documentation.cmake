# The target docs: a reference of the installed headers, from their comments, in
# docs/reference of the build folder. Warnings are errors, so that every exported
# function tells its arguments and its result.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/docs/reference)
set(DOXYGEN_PROJECT_BRIEF "What the reader module and the C library export")
set(DOXYGEN_GENERATE_HTML YES)
set(DOXYGEN_GENERATE_LATEX NO)
set(DOXYGEN_HAVE_DOT NO)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR}/Core/src ${PROJECT_SOURCE_DIR}/host/include)
set(DOXYGEN_STRIP_FROM_INC_PATH ${DOXYGEN_STRIP_FROM_PATH})
set(DOXYGEN_FULL_PATH_NAMES YES)
set(DOXYGEN_USE_MDFILE_AS_MAINPAGE docs/exports.md)
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_SORT_MEMBER_DOCS NO)
set(DOXYGEN_SHOW_USED_FILES NO)

set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
set(DOXYGEN_WARN_NO_PARAMDOC YES)

# Macros that stand in declarations mean nothing to a reader of the page.
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED
  "VN_API="
  "DORVEX_C_API="
  "__cplusplus=202002L"
  "__attribute__(x)="
  "static_assert(...)=")
# The plain error classes are made by a macro from the list of numbers.
set(DOXYGEN_FILTER_PATTERNS
  "*/vnerrorcodeex.h=\"${PROJECT_SOURCE_DIR}/cmake/expand-error-classes\"")

set(documented_headers ${DORVEX_READER_HEADERS})
list(TRANSFORM documented_headers PREPEND Core/src/)
list(APPEND documented_headers host/include/dorvex/dorvex.h)
doxygen_add_docs(docs docs/exports.md ${documented_headers}
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "Generating the reference of the installed headers")

# The picture of the flow, docs/flow.svg of the build folder.
find_program(DOT_PROGRAM dot)
if(DOT_PROGRAM)
  add_custom_target(flow_picture
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/docs
    COMMAND ${DOT_PROGRAM} -Tsvg ${PROJECT_SOURCE_DIR}/docs/flow.dot -o ${PROJECT_BINARY_DIR}/docs/flow.svg
    COMMENT "Drawing the flow from a package to tokens"
    VERBATIM)
  add_dependencies(docs flow_picture)
endif()
