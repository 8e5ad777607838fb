# Targets `clang-format-check` and `clang-tidy-check`: the sources as clang-format and clang-tidy 14
# want them. Other versions have other opinions, so with one of them the check says so and passes.

foreach(tool clang-format clang-tidy)
  add_custom_target(${tool}-check
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/lint.sh ${tool} ${PROJECT_BINARY_DIR}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    USES_TERMINAL VERBATIM)
endforeach()
