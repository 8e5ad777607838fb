# Sets VARIABLE to the path by which a test starts the program TARGET. Where that takes an emulator,
# the path is that of a script: the machine itself cannot run the program.
function(orb_startable_path VARIABLE TARGET)
  get_property(path TARGET ${TARGET} PROPERTY ORB_STARTABLE_PATH)
  if(NOT path AND CMAKE_CROSSCOMPILING_EMULATOR)
    set(path ${PROJECT_BINARY_DIR}/emulated/${TARGET})
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR "' '" emulator)
    file(GENERATE OUTPUT ${path}
      CONTENT "#!/bin/sh\nexec '${emulator}' '$<TARGET_FILE:${TARGET}>' \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
        WORLD_READ WORLD_EXECUTE)
  elseif(NOT path)
    set(path $<TARGET_FILE:${TARGET}>)
  endif()
  set_property(TARGET ${TARGET} PROPERTY ORB_STARTABLE_PATH ${path})
  set(${VARIABLE} ${path} PARENT_SCOPE)
endfunction()
