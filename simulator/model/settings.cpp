#include "model/message_ids.h"
#include "model/messages.h"

namespace orb::sim {
namespace {

void storeSerialPort(State& state, BodyReader& body) {
  state.serialPort.port = body.u8();
  state.serialPort.baudCode = body.u8();
}

void storeDopMask(State& state, BodyReader& body) {
  state.dopMask.mode = body.u8();
  for (std::uint16_t& limit : state.dopMask.limits) {
    limit = body.u16();
  }
}

void storeElevationCnrMask(State& state, BodyReader& body) {
  state.elevationCnrMask.mode = body.u8();
  state.elevationCnrMask.elevation = body.u8();
  state.elevationCnrMask.cnr = body.u8();
}

void storeTiming(State& state, BodyReader& body) {
  state.timing.mode = TimingMode{body.u8()};
  state.timing.surveyLength = body.u32();
  state.timing.standardDeviation = body.u32();
  state.timing.latitude = body.f64();
  state.timing.longitude = body.f64();
  state.timing.altitude = body.f32();
  state.surveyed = std::chrono::milliseconds{0};
}

void storePpsOutput(State& state, BodyReader& body) {
  state.ppsOutput.mode = body.u8();
  state.ppsOutput.alignSource = body.u8();
}

void storeFixNavMask(State& state, BodyReader& body) {
  state.fixNavMask.first = body.u8();
  state.fixNavMask.second = body.u8();
}

constexpr Setting kSettings[] = {
    {message::kSetSerialPort, 4, storeSerialPort},
    {message::kSetOutputType, 3,
     [](State& state, BodyReader& body) { state.outputType = OutputType{body.u8()}; }},
    {message::kSetPowerMode, 3,
     [](State& state, BodyReader& body) { state.powerMode = body.u8(); }},
    {message::kSetUpdateRate, 3,
     [](State& state, BodyReader& body) { state.updateRate = body.u8(); }},
    {message::kSetDopMask, 9, storeDopMask},
    {message::kSetElevationCnrMask, 5, storeElevationCnrMask},
    {message::kSetCableDelay, 6,
     [](State& state, BodyReader& body) { state.cableDelay = body.i32(); }},
    {message::kSetTiming, 31, storeTiming},
    {message::kSetPpsOutput, 4, storePpsOutput},
    {message::kSetSbas, 9, [](State& state, BodyReader& body) { body.bytes(state.sbas); }},
    {message::kSetQzss, 5, [](State& state, BodyReader& body) { body.bytes(state.qzss); }},
    {message::kSetNmeaIntervals, 15,
     [](State& state, BodyReader& body) { body.bytes(state.nmeaIntervals); }},
    {message::kSetInterferenceDetection, 4,
     [](State& state, BodyReader& body) {
       state.interferenceDetection = body.u8();
       body.u8();  // means nothing
     }},
    {message::kSetFixNavMask, 5, storeFixNavMask},
    {message::kSetNavigationMode, 4,
     [](State& state, BodyReader& body) { state.navigationMode = body.u8(); }},
    {message::kSetConstellations, 5,
     [](State& state, BodyReader& body) { state.constellations = body.u16(); }},
    {message::kSetNavMessageInterval, 4,
     [](State& state, BodyReader& body) { state.navMessageInterval = body.u8(); }},
    {message::kSetSecondBand, 4,
     [](State& state, BodyReader& body) { state.secondBand = body.u8(); }},
    {message::kSetPpsPulseWidth, 7,
     [](State& state, BodyReader& body) { state.ppsPulseWidth = body.u32(); }},
    {message::kSetPps2Frequency, 7,
     [](State& state, BodyReader& body) { state.pps2Frequency = body.u32(); }},
};

}  // namespace

const Setting* findSetting(std::uint16_t id) {
  for (const Setting& setting : kSettings) {
    if (setting.id == id) {
      return &setting;
    }
  }
  return nullptr;
}

}  // namespace orb::sim
