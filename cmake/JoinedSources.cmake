# A source file is little beside the headers that it shares with its neighbours: some are
# compiled as one, in half the time.
#
#   dorvex_join(TARGET [COUNT])   that many at a time, 8 if not said
#
# So what a file names for itself, in a namespace without a name, must be a name of its own
# in all of the target. Those with options of their own stay apart.
option(DORVEX_JOIN_SOURCES "Compile several source files as one" ON)
function(dorvex_join target)
  set(count 8)
  if(ARGC GREATER 1)
    set(count ${ARGV1})
  endif()
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD ${DORVEX_JOIN_SOURCES}
    UNITY_BUILD_BATCH_SIZE ${count}
    UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
endfunction()
