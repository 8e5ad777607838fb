# The tests of GoogleTest programs that cannot run emulated.

function(leave_out_test reason name)
  set(ORB_LEFT_OUT_TESTS ${ORB_LEFT_OUT_TESTS}:${name} PARENT_SCOPE)
endfunction()

leave_out_test("the emulator does not know the ioctl calls of I2C buses, and fails with ENOSYS"
  I2CDev.DoesNotOpenWhatIsNoI2CBus)

leave_out_test("the emulator itself has no memory left"
  InventoryClients.SeeAFileThatIsReadAfterOneThatMemoryWasTooShortFor)

leave_out_test("the machine's shell, which the test inspects, is no program of the emulated machine"
  ProgramFileTest.TakesAScriptForItsInterpreter)
