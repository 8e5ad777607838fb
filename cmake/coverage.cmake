# Target `coverage`: runs the library's own tests and prints how much of the library they reach.

find_program(GCOVR gcovr REQUIRED)

set(folders protocol transport controller commands board)
foreach(folder IN LISTS folders)
  get_property(programs DIRECTORY tests/${folder} PROPERTY BUILDSYSTEM_TARGETS)
  list(APPEND tests ${programs})
  list(APPEND run COMMAND
    ctest --test-dir ${PROJECT_BINARY_DIR}/tests/${folder} --output-on-failure --parallel 8)
endforeach()

add_custom_target(coverage
  COMMAND find ${PROJECT_BINARY_DIR} -name "*.gcda" -delete
  ${run}
  COMMAND ${GCOVR} --root ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}
    --filter "${PROJECT_SOURCE_DIR}/(protocol|transport|controller|commands|board)/"
    --exclude-throw-branches --exclude-unreachable-branches
    --txt --print-summary --fail-under-line 95 --fail-under-branch 90
  # No line is left out by a comment.
  COMMAND sh -c "! grep -rE 'GCOVR?_EXCL|LCOV_EXCL' protocol transport controller commands board"
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  USES_TERMINAL VERBATIM)
add_dependencies(coverage ${tests})
