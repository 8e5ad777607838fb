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

# What is installed is hardened as Debian hardens its packages (hardening=+all). Sanitizers and the
# coverage bring calls and checks of their own.
set(ORB_HARDENING "")
set(ORB_HARDENED_LINK "")
if(NOT ORB_SANITIZE AND NOT ORB_COVERAGE)
  set(ORB_HARDENING
    -fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i.86")
    list(APPEND ORB_HARDENING -fcf-protection)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
    list(APPEND ORB_HARDENING -mbranch-protection=standard)
  endif()
  set(ORB_HARDENED_LINK
    LINKER:-z,relro,-z,now "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>")
endif()

# orb_harden(): hardens the targets that this folder, and those below it, define from now on.
# Fortified calls need optimisation.
macro(orb_harden)
  add_compile_options(${ORB_HARDENING})
  if(ORB_HARDENING)
    add_compile_options(
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
  add_link_options(${ORB_HARDENED_LINK})
endmacro()
