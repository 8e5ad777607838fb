#include "model/message_ids.h"
#include "model/messages.h"
#include "model/pulses.h"
#include "model/solution.h"

namespace orb::sim {
namespace {

constexpr std::size_t kVersionExtensionWidth = 32;

// Each version is a group of four bytes whose first byte says nothing.
void reportSoftwareRevision(const State& state, BodyWriter& body) {
  constexpr std::uint8_t kSoftwareType = 1;
  const Identity& identity = state.identity;
  body.u8(kSoftwareType);
  for (const Version& version : {identity.kernel, identity.odm}) {
    body.u8(0).u8(version.x).u8(version.y).u8(version.z);
  }
  body.u8(0).u8(identity.revisionYear).u8(identity.revisionMonth).u8(identity.revisionDay);
}

void reportDopMask(const State& state, BodyWriter& body) {
  body.u8(state.dopMask.mode);
  for (const std::uint16_t limit : state.dopMask.limits) {
    body.u16(limit);
  }
}

void reportElevationCnrMask(const State& state, BodyWriter& body) {
  const ElevationCnrMask& mask = state.elevationCnrMask;
  body.u8(mask.mode).u8(mask.elevation).u8(mask.cnr);
}

void reportTiming(const State& state, BodyWriter& body) {
  const Timing& timing = state.timing;
  const auto surveyed = std::chrono::duration_cast<std::chrono::seconds>(state.surveyed).count();
  body.u8(static_cast<std::uint8_t>(timing.mode))
      .u32(timing.surveyLength)
      .u32(timing.standardDeviation)
      .f64(timing.latitude)
      .f64(timing.longitude)
      .f32(timing.altitude)
      .u8(static_cast<std::uint8_t>(state.runningTimingMode()))
      .u32(static_cast<std::uint32_t>(surveyed));
}

void reportGpsTime(const State& state, BodyWriter& body) {
  const GpsTime time = reportedTime(state);
  body.u32(static_cast<std::uint32_t>(time.timeOfWeek.count()))
      .u32(alignment(state))
      .u16(time.week)
      .u8(time.leapSeconds)
      .u8(time.leapSeconds)  // to come into force; no change is announced
      .u8(time.valid);
}

constexpr Query kQueries[] = {
    {message::kQuerySoftwareRevision, 2, message::kSoftwareRevision, reportSoftwareRevision},
    {message::kQueryUpdateRate, 1, message::kUpdateRate,
     [](const State& state, BodyWriter& body) { body.u8(state.updateRate); }},
    {message::kQueryPowerMode, 1, message::kPowerMode,
     [](const State& state, BodyWriter& body) { body.u8(state.powerMode); }},
    {message::kQueryDopMask, 1, message::kDopMask, reportDopMask},
    {message::kQueryElevationCnrMask, 1, message::kElevationCnrMask, reportElevationCnrMask},
    {message::kQueryTiming, 1, message::kTiming, reportTiming},
    {message::kQueryCableDelay, 1, message::kCableDelay,
     [](const State& state, BodyWriter& body) { body.i32(state.cableDelay); }},
    {message::kQueryPpsOutput, 1, message::kPpsOutput,
     [](const State& state, BodyWriter& body) {
       body.u8(state.ppsOutput.mode).u8(state.ppsOutput.alignSource);
     }},
    {message::kQuerySbas, 2, message::kSbas,
     [](const State& state, BodyWriter& body) { body.bytes(state.sbas); }},
    {message::kQueryQzss, 2, message::kQzss,
     [](const State& state, BodyWriter& body) { body.bytes(state.qzss); }},
    {message::kQueryNmeaIntervals, 2, message::kNmeaIntervals,
     [](const State& state, BodyWriter& body) { body.bytes(state.nmeaIntervals); }},
    {message::kQueryInterferenceDetection, 2, message::kInterferenceDetection,
     [](const State& state, BodyWriter& body) {
       constexpr std::uint8_t kUnknown = 0;
       const bool detects = state.interferenceDetection != 0;
       body.u8(state.interferenceDetection).u8(detects ? state.interferenceStatus : kUnknown);
     }},
    {message::kQueryFixNavMask, 2, message::kFixNavMask,
     [](const State& state, BodyWriter& body) {
       body.u8(state.fixNavMask.first).u8(state.fixNavMask.second);
     }},
    {message::kQueryNavigationMode, 2, message::kNavigationMode,
     [](const State& state, BodyWriter& body) { body.u8(state.navigationMode); }},
    {message::kQueryConstellations, 2, message::kConstellations,
     [](const State& state, BodyWriter& body) { body.u16(state.constellations); }},
    {message::kQueryGpsTime, 2, message::kGpsTime, reportGpsTime},
    {message::kQueryNavMessageInterval, 2, message::kNavMessageInterval,
     [](const State& state, BodyWriter& body) { body.u8(state.navMessageInterval); }},
    {message::kQuerySecondBand, 2, message::kSecondBand,
     [](const State& state, BodyWriter& body) { body.u8(state.secondBand); }},
    {message::kQueryVersionExtension, 2, message::kVersionExtension,
     [](const State& state, BodyWriter& body) {
       body.text(state.identity.versionExtension, kVersionExtensionWidth);
     }},
    {message::kQueryPpsPulseWidth, 2, message::kPpsPulseWidth,
     [](const State& state, BodyWriter& body) { body.u32(state.ppsPulseWidth); }},
    {message::kQueryPps2Frequency, 2, message::kPps2Frequency,
     [](const State& state, BodyWriter& body) { body.u32(state.pps2Frequency); }},
};

}  // namespace

const Query* findQuery(std::uint16_t id) {
  for (const Query& query : kQueries) {
    if (query.id == id) {
      return &query;
    }
  }
  return nullptr;
}

}  // namespace orb::sim
