# The names of the 28,000 functions of a module are two fifths of its file, and only debuggers,
# profilers and valgrind read them: they find them beside the module, in MODULE.debug.
# Sanitizers want them in the module itself.
function(dorvex_separate_symbols target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Release" OR DORVEX_SANITIZERS OR DORVEX_COVERAGE)
    return()
  endif()
  set(module $<TARGET_FILE:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${module} ${module}.debug
    COMMAND ${CMAKE_STRIP} --strip-unneeded ${module}
    COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=${module}.debug ${module}
    VERBATIM)
endfunction()
