#include "scenario/message_names.h"

#include "model/message_ids.h"

namespace orb::sim {
namespace {

struct NamedMessage {
  std::string_view name;
  message::Id id;
};

constexpr NamedMessage kMessages[] = {
    {"query-software-revision", message::kQuerySoftwareRevision},
    {"query-version-extension", message::kQueryVersionExtension},
    {"soft-reset", message::kSoftReset},
    {"set-factory-defaults", message::kSetFactoryDefaults},
    {"restart", message::kRestart},
    {"set-serial-port", message::kSetSerialPort},
    {"set-output-type", message::kSetOutputType},
    {"set-power-mode", message::kSetPowerMode},
    {"query-power-mode", message::kQueryPowerMode},
    {"set-update-rate", message::kSetUpdateRate},
    {"query-update-rate", message::kQueryUpdateRate},
    {"set-navigation-interval", message::kSetNavMessageInterval},
    {"query-navigation-interval", message::kQueryNavMessageInterval},
    {"set-nmea-intervals", message::kSetNmeaIntervals},
    {"query-nmea-intervals", message::kQueryNmeaIntervals},
    {"query-gps-time", message::kQueryGpsTime},
    {"set-constellations", message::kSetConstellations},
    {"query-constellations", message::kQueryConstellations},
    {"set-sbas", message::kSetSbas},
    {"query-sbas", message::kQuerySbas},
    {"set-qzss", message::kSetQzss},
    {"query-qzss", message::kQueryQzss},
    {"set-second-band", message::kSetSecondBand},
    {"query-second-band", message::kQuerySecondBand},
    {"set-dop-mask", message::kSetDopMask},
    {"query-dop-mask", message::kQueryDopMask},
    {"set-elevation-cnr-mask", message::kSetElevationCnrMask},
    {"query-elevation-cnr-mask", message::kQueryElevationCnrMask},
    {"set-fix-mask", message::kSetFixNavMask},
    {"query-fix-mask", message::kQueryFixNavMask},
    {"set-navigation-mode", message::kSetNavigationMode},
    {"query-navigation-mode", message::kQueryNavigationMode},
    {"set-interference-detection", message::kSetInterferenceDetection},
    {"query-interference-detection", message::kQueryInterferenceDetection},
    {"set-cable-delay", message::kSetCableDelay},
    {"query-cable-delay", message::kQueryCableDelay},
    {"set-timing", message::kSetTiming},
    {"query-timing", message::kQueryTiming},
    {"set-pps-output", message::kSetPpsOutput},
    {"query-pps-output", message::kQueryPpsOutput},
    {"set-pps-pulse-width", message::kSetPpsPulseWidth},
    {"query-pps-pulse-width", message::kQueryPpsPulseWidth},
    {"set-pps2-frequency", message::kSetPps2Frequency},
    {"query-pps2-frequency", message::kQueryPps2Frequency},
};

}  // namespace

std::optional<std::uint16_t> messageNamed(std::string_view name) {
  for (const NamedMessage& message : kMessages) {
    if (message.name == name) {
      return message.id;
    }
  }
  return std::nullopt;
}

std::vector<std::string_view> messageNames() {
  std::vector<std::string_view> names;
  for (const NamedMessage& message : kMessages) {
    names.push_back(message.name);
  }
  return names;
}

}  // namespace orb::sim
