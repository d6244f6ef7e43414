# Debian packages, by CPack; scripts/package makes them. Each package is a
# component of what is installed, together with files about it that
# packaging/prepare writes into package-files.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${DORVEX_MAINTAINER}")
set(CPACK_OUTPUT_FILE_PREFIX ${DORVEX_PACKAGES_DIR})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# The libraries of one package that others use.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(package_files ${PROJECT_BINARY_DIR}/package-files)

# add_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION [DEPENDS...]). The
# description is folded by hand: CPack takes its lines as they are.
macro(add_package component name section summary description)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}")
  string(REPLACE ";" ", " CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${ARGN}")
  install(DIRECTORY ${package_files}/${name}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    COMPONENT ${component})
  if(EXISTS ${PROJECT_SOURCE_DIR}/packaging/lintian/${name})
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/lintian/${name}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
  endif()
endmacro()

add_package(tool dorvex text
  "text out of Pages, Keynote and Numbers documents"
  "dorvex prints the text of documents of the iWork '13 generation and later, for
search, indexing and conversion. Each document is read in a confined process of
its own, so that a bad one costs nothing but itself.
.
This package holds the command line tool."
  "dorvex-modules ${same_version}")

add_package(module dorvex-modules libs
  "reader modules for Pages, Keynote and Numbers documents"
  "The reader module dorvexsr.so, which document filtering hosts load, and
unzip.so, the zip container module that it asks its host for; with what belongs
to that one and with the module that renders content.")

add_package(library libdorvex0 libs
  "text out of Pages, Keynote and Numbers documents - C library"
  "A host library that opens documents of the iWork '13 generation and later and
gives their texts, each document read in a confined process of its own.
.
This package holds the shared library, which has a C interface."
  "dorvex-modules ${same_version}")

add_package(development libdorvex-dev libdevel
  "text out of Pages, Keynote and Numbers documents - development files"
  "Headers and files for CMake and pkg-config: for the shared library with its C
interface, for the host library in C++ (static), and for programs that load or
link the reader module themselves. With the schema of the documents."
  "libdorvex0 ${same_version}" "dorvex-modules ${same_version}" libsnappy-dev libseccomp-dev)

add_package(python python3-dorvex python
  "text out of Pages, Keynote and Numbers documents - Python binding"
  "import dorvex, and for text in dorvex.texts(path): a typed binding of
libdorvex, with a class of exception for each family of failures."
  "python3:any" "libdorvex0 (>= ${PROJECT_VERSION})")

# Nothing in these is looked through for shared libraries.
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/python/postinst
  ${PROJECT_SOURCE_DIR}/packaging/python/prerm)

# What packages that use the library depend on.
get_target_property(abi_version dorvex_c SOVERSION)
configure_file(packaging/library/shlibs.in ${PROJECT_BINARY_DIR}/package-library/shlibs @ONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_BINARY_DIR}/package-library/shlibs
  ${PROJECT_SOURCE_DIR}/packaging/library/triggers)

# Files that packaging/prepare makes from the tool's help and of the wheel.
set(reference ${PROJECT_BINARY_DIR}/package-reference)
install(FILES ${reference}/dorvex.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES ${reference}/dorvex.bash RENAME dorvex
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
install(FILES ${reference}/_dorvex
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
install(FILES ${reference}/dorvex.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)
install(DIRECTORY ${PROJECT_BINARY_DIR}/package-python/
  DESTINATION lib/python3/dist-packages COMPONENT python)

include(CPack)
