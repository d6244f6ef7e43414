# Gives the target dorvex::protobuf, the protobuf runtime that the reader links, and
# dorvex::protobuf_json, what tools and tests need of it beside that.
#
# The module must be gone after dlclose, and its ShutdownProtobufLibrary must
# not take down a protobuf that the host uses itself. Debian's shared library
# cannot give that (it holds unique symbols and stays resident), and its static
# library is not position independent. So the ordinary build compiles Debian's
# source package, private to the module.
#
# DORVEX_PROTOBUF chooses:
#   private  Debian's source package, fetched and verified by apt (the default)
#   system   the system's shared library: works, but the module never unloads
#   a path   the prefix of another static, position-independent build
set(DORVEX_PROTOBUF "private" CACHE STRING "private, system, or the prefix of a static PIC build")

find_program(PROTOC_EXECUTABLE protoc REQUIRED)
execute_process(COMMAND ${PROTOC_EXECUTABLE} --version
                OUTPUT_VARIABLE protoc_version OUTPUT_STRIP_TRAILING_WHITESPACE)
string(REGEX REPLACE "^libprotoc " "" DORVEX_PROTOBUF_VERSION "${protoc_version}")

# Where the unpacked source is kept; several build folders may share one.
set(DORVEX_PROTOBUF_SOURCE_DIR "${PROJECT_BINARY_DIR}/protobuf-source" CACHE PATH
    "Folder for the source package of protobuf")

add_library(dorvex_protobuf INTERFACE)
add_library(dorvex::protobuf ALIAS dorvex_protobuf)
find_package(Threads REQUIRED)

function(dorvex_fetch_protobuf_source result)
  if(NOT EXISTS ${DORVEX_PROTOBUF_SOURCE_DIR}/protobuf/CMakeLists.txt)
    message(STATUS "Fetching the source package of protobuf ${DORVEX_PROTOBUF_VERSION}")
    file(MAKE_DIRECTORY ${DORVEX_PROTOBUF_SOURCE_DIR})
    execute_process(
      COMMAND sh ${PROJECT_SOURCE_DIR}/cmake/fetch-protobuf-source.sh
              ${DORVEX_PROTOBUF_VERSION} ${DORVEX_PROTOBUF_SOURCE_DIR}
      RESULT_VARIABLE status
      OUTPUT_FILE ${DORVEX_PROTOBUF_SOURCE_DIR}/fetch.log
      ERROR_FILE ${DORVEX_PROTOBUF_SOURCE_DIR}/fetch.log)
    if(NOT status EQUAL 0)
      set(${result} FALSE PARENT_SCOPE)
      return()
    endif()
  endif()
  set(${result} TRUE PARENT_SCOPE)
endfunction()

# Half of protobuf's files are never linked: its own parser of .proto files, JSON,
# the well-known types. They go to a library of their own, for those that ask.
function(dorvex_split_off_unused_protobuf)
  set(unused "compiler/|util/|generated_message_tctable_|generated_enum_util|service|arenaz_sampler|inlined_string")
  string(APPEND unused "|(any|api|duration|empty|field_mask|source_context|struct|timestamp|type|wrappers)[.]pb[.]cc")
  string(APPEND unused "|io/(gzip_stream|printer|io_win32)|stubs/(bytestream|statusor|time[.]cc)")
  # Whatever folders the source lies in, only the names below this one count.
  set(unused "^.*/src/google/protobuf/(${unused})")
  get_target_property(sources libprotobuf SOURCES)
  set(others ${sources})
  list(FILTER sources EXCLUDE REGEX "${unused}")
  list(FILTER others INCLUDE REGEX "${unused}")
  list(FILTER others INCLUDE REGEX "[.]cc$")
  # Nor does JSON need all of that.
  list(FILTER others EXCLUDE REGEX "compiler/|message_differencer|field_comparator|gzip_stream|io/printer|io_win32")
  set_target_properties(libprotobuf PROPERTIES SOURCES "${sources}")
  add_library(dorvex_protobuf_json STATIC EXCLUDE_FROM_ALL ${others})
  target_compile_options(dorvex_protobuf_json PRIVATE -w -O0)
  # Joined but for generated files, which all have the same names. Some leave protobuf's
  # macros defined behind them.
  string(CONCAT undefined
    "#ifdef PROTOBUF_NAMESPACE_ID\n"
    "#include <google/protobuf/port_undef.inc>\n"
    "#endif")
  set_target_properties(dorvex_protobuf_json PROPERTIES
    UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10 UNITY_BUILD_CODE_BEFORE_INCLUDE "${undefined}")
  list(FILTER others INCLUDE REGEX "[.]pb[.]cc$")
  set_source_files_properties(${others}
    TARGET_DIRECTORY dorvex_protobuf_json PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_link_libraries(dorvex_protobuf_json PUBLIC dorvex_protobuf)
endfunction()

function(dorvex_build_private_protobuf)
  set(protobuf_BUILD_TESTS OFF)
  set(protobuf_BUILD_PROTOC_BINARIES OFF)
  set(protobuf_BUILD_SHARED_LIBS OFF)
  set(protobuf_WITH_ZLIB OFF)
  set(protobuf_INSTALL OFF)
  set(protobuf_DISABLE_RTTI OFF)
  set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
  set(CMAKE_WARN_DEPRECATED OFF CACHE INTERNAL "")
  add_subdirectory(${DORVEX_PROTOBUF_SOURCE_DIR}/protobuf ${PROJECT_BINARY_DIR}/protobuf
                   EXCLUDE_FROM_ALL SYSTEM)
  target_compile_options(libprotobuf PRIVATE
    -w -O2 -ffunction-sections -fdata-sections)
  target_compile_definitions(libprotobuf PRIVATE NDEBUG)
  # Most of a file is headers that all have. The descriptors are built once, the parser of
  # text is never called: neither is worth the time that more optimisation takes.
  set_target_properties(libprotobuf PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
  set(once descriptor.cc text_format.cc)
  list(TRANSFORM once PREPEND ${DORVEX_PROTOBUF_SOURCE_DIR}/protobuf/src/google/protobuf/)
  set_source_files_properties(${once}
    TARGET_DIRECTORY libprotobuf
    PROPERTIES COMPILE_OPTIONS -O1 SKIP_UNITY_BUILD_INCLUSION ON)
  dorvex_split_off_unused_protobuf()
  target_link_libraries(dorvex_protobuf INTERFACE libprotobuf)
  target_include_directories(dorvex_protobuf SYSTEM INTERFACE
    ${DORVEX_PROTOBUF_SOURCE_DIR}/protobuf/src)
endfunction()

set(DORVEX_PROTOBUF_IS_PRIVATE TRUE)
if(DORVEX_PROTOBUF STREQUAL "private")
  dorvex_fetch_protobuf_source(fetched)
  if(fetched)
    dorvex_build_private_protobuf()
  else()
    message(WARNING
      "The source package of protobuf ${DORVEX_PROTOBUF_VERSION} cannot be had (see "
      "${DORVEX_PROTOBUF_SOURCE_DIR}/fetch.log). Falling back to the system's shared library: "
      "the module works, but it cannot be unloaded, and vnDllShutdown shuts down the protobuf "
      "of the whole process.")
    set(DORVEX_PROTOBUF_IS_PRIVATE FALSE)
  endif()
elseif(DORVEX_PROTOBUF STREQUAL "system")
  set(DORVEX_PROTOBUF_IS_PRIVATE FALSE)
else()
  target_include_directories(dorvex_protobuf SYSTEM INTERFACE ${DORVEX_PROTOBUF}/include)
  find_library(DORVEX_PROTOBUF_ARCHIVE NAMES libprotobuf.a
               PATHS ${DORVEX_PROTOBUF}/lib ${DORVEX_PROTOBUF}/${CMAKE_INSTALL_LIBDIR}
               NO_DEFAULT_PATH REQUIRED)
  target_link_libraries(dorvex_protobuf INTERFACE ${DORVEX_PROTOBUF_ARCHIVE} Threads::Threads)
endif()

if(NOT DORVEX_PROTOBUF_IS_PRIVATE)
  set(Protobuf_USE_STATIC_LIBS OFF)
  find_package(Protobuf REQUIRED)
  target_link_libraries(dorvex_protobuf INTERFACE protobuf::libprotobuf)
endif()

if(NOT TARGET dorvex_protobuf_json)
  add_library(dorvex_protobuf_json INTERFACE)
  target_link_libraries(dorvex_protobuf_json INTERFACE dorvex_protobuf)
endif()
add_library(dorvex::protobuf_json ALIAS dorvex_protobuf_json)

# Said again at the end of every build and by `dorvex --version`: the warning above is
# far up by then.
set(DORVEX_PROTOBUF_NOTE "")
if(NOT DORVEX_PROTOBUF_IS_PRIVATE)
  set(DORVEX_PROTOBUF_NOTE "built with the shared protobuf: the reader module cannot be unloaded")
endif()
