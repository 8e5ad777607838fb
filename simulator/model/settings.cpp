#include "model/message_ids.h"
#include "model/messages.h"

namespace orb::sim {
namespace {

void storeSerialPort(Settings& settings, BodyReader& body) {
  settings.serialPort.port = body.u8();
  settings.serialPort.baudCode = body.u8();
}

void storeDopMask(Settings& settings, BodyReader& body) {
  settings.dopMask.mode = body.u8();
  for (std::uint16_t& limit : settings.dopMask.limits) {
    limit = body.u16();
  }
}

void storeElevationCnrMask(Settings& settings, BodyReader& body) {
  settings.elevationCnrMask.mode = body.u8();
  settings.elevationCnrMask.elevation = body.u8();
  settings.elevationCnrMask.cnr = body.u8();
}

void storeTiming(Settings& settings, BodyReader& body) {
  settings.timing.mode = TimingMode{body.u8()};
  settings.timing.surveyLength = body.u32();
  settings.timing.standardDeviation = body.u32();
  settings.timing.latitude = body.f64();
  settings.timing.longitude = body.f64();
  settings.timing.altitude = body.f32();
}

void storePpsOutput(Settings& settings, BodyReader& body) {
  settings.ppsOutput.mode = body.u8();
  settings.ppsOutput.alignSource = body.u8();
}

void storeFixNavMask(Settings& settings, BodyReader& body) {
  settings.fixNavMask.first = body.u8();
  settings.fixNavMask.second = body.u8();
}

constexpr Setting kSettings[] = {
    {message::kSetSerialPort, 4, storeSerialPort},
    {message::kSetOutputType, 3,
     [](Settings& settings, BodyReader& body) { settings.outputType = OutputType{body.u8()}; }},
    {message::kSetPowerMode, 3,
     [](Settings& settings, BodyReader& body) { settings.powerMode = body.u8(); }},
    {message::kSetUpdateRate, 3,
     [](Settings& settings, BodyReader& body) { settings.updateRate = body.u8(); }},
    {message::kSetDopMask, 9, storeDopMask},
    {message::kSetElevationCnrMask, 5, storeElevationCnrMask},
    {message::kSetCableDelay, 6,
     [](Settings& settings, BodyReader& body) { settings.cableDelay = body.i32(); }},
    {message::kSetTiming, 31, storeTiming},
    {message::kSetPpsOutput, 4, storePpsOutput},
    {message::kSetSbas, 9, [](Settings& settings, BodyReader& body) { body.bytes(settings.sbas); }},
    {message::kSetQzss, 5, [](Settings& settings, BodyReader& body) { body.bytes(settings.qzss); }},
    {message::kSetNmeaIntervals, 15,
     [](Settings& settings, BodyReader& body) { body.bytes(settings.nmeaIntervals); }},
    {message::kSetInterferenceDetection, 4,
     [](Settings& settings, BodyReader& body) {
       settings.interferenceDetection = body.u8();
       body.u8();  // means nothing
     }},
    {message::kSetFixNavMask, 5, storeFixNavMask},
    {message::kSetNavigationMode, 4,
     [](Settings& settings, BodyReader& body) { settings.navigationMode = body.u8(); }},
    {message::kSetConstellations, 5,
     [](Settings& settings, BodyReader& body) { settings.constellations = body.u16(); }},
    {message::kSetNavMessageInterval, 4,
     [](Settings& settings, BodyReader& body) { settings.navMessageInterval = body.u8(); }},
    {message::kSetSecondBand, 4,
     [](Settings& settings, BodyReader& body) { settings.secondBand = body.u8(); }},
    {message::kSetPpsPulseWidth, 7,
     [](Settings& settings, BodyReader& body) { settings.ppsPulseWidth = body.u32(); }},
    {message::kSetPps2Frequency, 7,
     [](Settings& settings, BodyReader& body) { settings.pps2Frequency = body.u32(); }},
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
