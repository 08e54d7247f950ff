# How ctest runs the test programs, here and under an emulator.

# Where a machine builds for another, a program cannot start its own kind anew: the emulator runs
# it, the kernel does not know it. Hence these are left out:
#   DebuggerShowDeathTest   runs each case in a process of its own.
#   Batch, TimingsOfABatch, a case of Presets  segment every map in a process of its own.
set(VORUND_NOT_UNDER_EMULATION DebuggerShowDeathTest.* Batch.* TimingsOfABatch.*
  Presets.AreInForceForAMapAndForABatch)
list(JOIN VORUND_NOT_UNDER_EMULATION ":" VORUND_NOT_UNDER_EMULATION)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/not_under_emulation ${VORUND_NOT_UNDER_EMULATION})

# One ctest entry per case. Under an emulator, where a program takes seconds to start, two entries
# per program, each with half of the cases.
function(vorund_discover_tests name)
  if(NOT CMAKE_CROSSCOMPILING)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
    return()
  endif()
  foreach(shard RANGE 1)
    add_test(NAME ${name}.${shard} COMMAND ${name} --gtest_brief=1
      --gtest_filter=-${VORUND_NOT_UNDER_EMULATION})
    set_tests_properties(${name}.${shard} PROPERTIES TIMEOUT 5400
      ENVIRONMENT "GTEST_TOTAL_SHARDS=2;GTEST_SHARD_INDEX=${shard}")
  endforeach()
endfunction()

# Gives the command `vorund` as a path that can be started: itself, or a script that starts it under
# the emulator.
function(vorund_program_for_tests variable)
  set(program $<TARGET_FILE:vorund_cli>)
  if(CMAKE_CROSSCOMPILING)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/vorund_under_emulator)
    file(GENERATE OUTPUT ${script} CONTENT "#!/bin/sh\nexec ${emulator} ${program} \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set(program ${script})
  endif()
  set(${variable} ${program} PARENT_SCOPE)
endfunction()
