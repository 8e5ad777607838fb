# Read by ctest: the tests that cannot run emulated, which it lists as disabled.

function(leave_out reason)
  set_tests_properties(${ARGN} PROPERTIES DISABLED TRUE)
endfunction()

# leave_out_unbuilt(REASON TEST...): the same, of tests that are not even built.
function(leave_out_unbuilt reason)
  foreach(test ${ARGN})
    add_test(${test} false)
  endforeach()
  leave_out(${reason} ${ARGN})
endfunction()

leave_out_unbuilt("valgrind counts the emulator's instructions, strace sees its system calls"
  Budgets.InstructionsAndCallsOfTheLibrary
  system_calls_test)

leave_out("the linker leaves some 55 KiB empty between segments, for pages of up to 64 KiB"
  Budgets.SizeOfTheStrippedLibrary)

leave_out("orb-sim refuses the commands that it is to run: they are programs of another machine"
  Abi.ClientOfFirstRelease
  InstalledPackage
  simulator.program.antenna
  simulator.interpose.preload
  simulator.interpose.i2c_device
  simulator.program.run
  simulator.program.scenario)
