# Half of what a file costs is the standard library's headers, and of a test those of
# GoogleTest: targets of many files parse them once.
#
#   dorvex_precompile(TARGET [HEADER...])   the headers named beside the usual ones
#
# Files include what they use all the same: the preset fuzz compiles without
# (CMAKE_DISABLE_PRECOMPILE_HEADERS).
function(dorvex_precompile target)
  target_precompile_headers(${target} PRIVATE
    <algorithm> <array> <charconv> <cmath> <cstdint> <cstring> <functional> <map>
    <memory> <optional> <span> <string> <string_view> <system_error> <unordered_map>
    <utility> <variant> <vector> ${ARGN})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The first: without it ccache cannot tell what the compiled header holds, and stands
    # aside. The others: GCC takes what it precompiled for the project's own code, and sees
    # lengths in std::string that cannot be.
    target_compile_options(${target} PRIVATE
      -fpch-preprocess -Wno-stringop-overflow -Wno-stringop-overread -Wno-array-bounds)
  endif()
endfunction()
