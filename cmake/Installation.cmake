# What is installed, in four components:
#
#   module       the reader, the container and the content module, side by side
#   tool         the dorvex tool and what it starts
#   library      the C interface of the host library
#   development  the host library, all headers, the schema, and the files by
#                which CMake and pkg-config find all of it
#
# Packaging.cmake makes Debian packages of them.
include(CMakePackageConfigHelpers)

set(module_dir ${CMAKE_INSTALL_LIBDIR}/dorvex)
set(reader_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/dorvex-reader)
set(messages_dir ${CMAKE_INSTALL_DATADIR}/dorvex/messages)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/dorvex)

install(TARGETS dorvexsr EXPORT dorvexTargets
  LIBRARY DESTINATION ${module_dir} COMPONENT module)
install(TARGETS unzip unzip_libzip dorvexcontent LIBRARY DESTINATION ${module_dir} COMPONENT module)

install(TARGETS dorvex RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
install(TARGETS dorvex-inspect
  RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/dorvex COMPONENT tool)

install(TARGETS dorvex_c EXPORT dorvexTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
    NAMELINK_COMPONENT development)
install(TARGETS dorvex_host EXPORT dorvexTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY host/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# The headers of what the module exports; the reader's own stay here.
set(DORVEX_READER_HEADERS
  Readers/hostapi/container_reader.h
  Readers/hostapi/container_status.h
  Readers/hostapi/host_records.h
  Readers/hostapi/reader_exports.h
  Readers/hostapi/reader_interface.h
  Tools/formats/vniwork13/iwa_utils.h
  Tools/formats/vniwork13/protobuf_general.h
  Tools/formats/vniwork13/registry.h
  Tools/formats/vniwork13/snappy_utils.h
  Tools/vennik/vnexcept/vennik_error.h
  Tools/vennik/vnexcept/vnerrorcode.h
  Tools/vennik/vnexcept/vnerrorcodeex.h
  Tools/vennik/vnexcept/vnexcept.h
  Tools/vnexport.h
  Tools/vnose/vnose.h
  Tools/vnstring/detail/utf8Sanitizer.h
  Tools/vnstring/vnstring.h)
foreach(header IN LISTS DORVEX_READER_HEADERS)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES Core/src/${header} DESTINATION ${reader_include_dir}/${folder}
    COMPONENT development)
endforeach()
install(FILES unzip/include/dorvex/unzip_limits.h
  DESTINATION ${reader_include_dir}/dorvex COMPONENT development)
install(DIRECTORY Core/src/Tools/formats/vniwork13/messages/
  DESTINATION ${messages_dir} COMPONENT development
  FILES_MATCHING PATTERN "*.proto")

install(EXPORT dorvexTargets NAMESPACE dorvex:: DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(cmake/dorvexConfig.cmake.in
  ${PROJECT_BINARY_DIR}/dorvexConfig.cmake
  INSTALL_DESTINATION ${package_dir} PATH_VARS messages_dir)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/dorvexConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/dorvexConfig.cmake
  ${PROJECT_BINARY_DIR}/dorvexConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# Relative, so that the installed tree can be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(package IN ITEMS dorvex dorvex-host dorvex-reader)
  configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
