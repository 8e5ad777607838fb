# The library itself.

add_library(orb-gnss SHARED
  base/console.cpp
  base/sleep.cpp
  board/chip_enable.cpp
  board/hardware_discovery.cpp
  commands/constellations.cpp
  commands/defaults.cpp
  commands/extended_nmea.cpp
  commands/firmware_version.cpp
  commands/gps_time.cpp
  commands/masks_and_fix.cpp
  commands/navigation_data.cpp
  commands/navigation_model.cpp
  commands/output_and_power.cpp
  commands/pps_output_mode.cpp
  commands/survey.cpp
  commands/timing_pulse.cpp
  controller/calendar.cpp
  controller/controller.cpp
  controller/detection_and_restart.cpp
  controller/identity_file.cpp
  controller/log_file.cpp
  controller/module_driver.cpp
  controller/null_controller.cpp
  protocol/catalogue.cpp
  protocol/command.cpp
  protocol/message.cpp
  protocol/message_builder.cpp
  protocol/message_list.cpp
  protocol/packet.cpp
  protocol/reply.cpp
  transport/command_exchange.cpp
  transport/look_schedule.cpp
  transport/receive_buffer.cpp
  transport/serial_channel.cpp)
add_library(orb-gnss::orb-gnss ALIAS orb-gnss)

# Only packets, messages and the channel see every byte of the line. The rest runs once a command,
# waits for the line most of the time, and is built for size.
get_target_property(sources orb-gnss SOURCES)
list(FILTER sources EXCLUDE REGEX
  "^(protocol/(catalogue|message|packet)|transport/(look|receive|serial))")
set_source_files_properties(${sources} PROPERTIES
  COMPILE_OPTIONS "$<$<CONFIG:Release,RelWithDebInfo>:-Os>")

# Cutting messages out of the stream goes back and forth between these: as one unit, the small
# functions need no calls.
set_target_properties(orb-gnss PROPERTIES UNITY_BUILD ${ORB_JOIN_SOURCES} UNITY_BUILD_MODE GROUP)
set_source_files_properties(
  protocol/message.cpp protocol/message_builder.cpp protocol/message_list.cpp
  PROPERTIES UNITY_GROUP assembler)
target_compile_options(orb-gnss PRIVATE -fno-semantic-interposition)

target_include_directories(orb-gnss
  PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  PRIVATE
    ${PROJECT_SOURCE_DIR})
target_compile_features(orb-gnss PUBLIC cxx_std_17)
target_link_libraries(orb-gnss PUBLIC orb-platform PRIVATE $<BUILD_INTERFACE:orb-build-options>)

set(ORB_GNSS_VERSION_SCRIPT ${PROJECT_SOURCE_DIR}/cmake/orb-gnss.map)
target_link_options(orb-gnss PRIVATE LINKER:--version-script=${ORB_GNSS_VERSION_SCRIPT})
# The library calls its own functions without a detour. Those of the platform library are not its
# own: whoever provides them is called.
target_link_options(orb-gnss PRIVATE LINKER:-Bsymbolic-functions LINKER:--hash-style=gnu)
if(NOT ORB_SANITIZE)
  target_link_options(orb-gnss PRIVATE LINKER:--no-undefined)
endif()
if(ORB_COVERAGE)
  target_compile_options(orb-gnss PRIVATE --coverage -fprofile-update=atomic)
  target_link_options(orb-gnss PRIVATE --coverage)
endif()
set_target_properties(orb-gnss PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION 0
  LINK_DEPENDS ${ORB_GNSS_VERSION_SCRIPT})

install(TARGETS orb-gnss EXPORT orb-gnss-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/orb-gnss
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)
