# Target `coverage`: runs all tests, which have to be built, and prints how much of the library they
# reach.

find_program(GCOVR gcovr REQUIRED)

add_custom_target(coverage
  COMMAND find ${PROJECT_BINARY_DIR} -name "*.gcda" -delete
  COMMAND ctest --test-dir ${PROJECT_BINARY_DIR} --output-on-failure --parallel 8
  COMMAND ${GCOVR} --root ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}
    --filter "${PROJECT_SOURCE_DIR}/(protocol|transport|controller|commands|board)/"
    --exclude-throw-branches --exclude-unreachable-branches
    --txt --print-summary --fail-under-line 95 --fail-under-branch 90
  COMMAND ${CMAKE_COMMAND} -E echo "Exclusions by comment:"
  COMMAND sh -c "grep -rE 'GCOVR?_EXCL|LCOV_EXCL' protocol transport controller commands board | wc -l"
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  USES_TERMINAL VERBATIM)
