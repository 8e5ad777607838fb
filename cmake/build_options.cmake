# What every target of the project is compiled with: link `orb-build-options` privately.

find_package(Threads REQUIRED)

add_library(orb-build-options INTERFACE)
target_compile_features(orb-build-options INTERFACE cxx_std_20)
target_compile_options(orb-build-options INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
if(ORB_WERROR)
  target_compile_options(orb-build-options INTERFACE -Werror)
endif()

if(ORB_SANITIZE)
  add_compile_options(-fsanitize=${ORB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ORB_SANITIZE})
endif()
