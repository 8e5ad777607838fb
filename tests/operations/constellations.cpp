#include "operations/operation.h"

namespace orb::test {

namespace {

using namespace std::chrono_literals;

constexpr const char* kConfigureConstellations =
    "64 19: Configure the GNSS constellation type used for navigation solution ";
const Sent kQueryConstellations{
    "A0 A1 00 02 64 1A 7E 0D 0A",
    "64 1A: Query the GNSS constellation type used for navigation solution"};
const Sent kQuerySbas{"A0 A1 00 02 62 02 60 0D 0A", "62 02: Query SBAS status of GNSS receiver "};
const Sent kQueryQzss{"A0 A1 00 02 62 04 66 0D 0A", "62 04: Query QZSS status of GNSS receiver"};
const Sent kQuerySecondBand{"A0 A1 00 02 64 51 35 0D 0A",
                            "64 51: Query second band status of GNSS receiver "};

constexpr const char* kNoConstellations = "A0 A1 00 05 64 19 00 00 00 7D 0D 0A";
constexpr const char* kAllConstellations = "A0 A1 00 05 64 19 00 0F 00 72 0D 0A";

/// A switch of the receiver.
struct Switch {
  std::string name;
  unsigned int (Driver::*set)(bool);
  std::string title;
  std::string on;
  std::string off;
  std::chrono::milliseconds settle;
  Sent query;
  std::string repliesOn;
  std::string repliesOff;
  std::string shortReply;
  std::function<void(sim::State&, bool)> effect;
};

// An unanswered read-back leaves the switch off.
Setting turning(const Switch& it, bool on, const std::string& name, const Call& call) {
  return {.name = name,
          .call = call,
          .sends = {on ? it.on : it.off, it.title},
          .settle = it.settle,
          .reads = it.query,
          .reply = {on ? it.repliesOn : it.repliesOff},
          .otherReply = {on ? it.repliesOff : it.repliesOn},
          .shortReply = {it.shortReply, {on ? 1U : 0U}},
          .noReply = {on ? 5U : 4U}};
}

Setting turningOn(const Switch& it) {
  Setting row = turning(it, true, it.name + "On", calling(it.set, true));
  row.draw = [set = it.set, effect = it.effect](Numbers& numbers) -> Drawn {
    const bool on = numbers.coin();
    return {calling(set, on), 0, [=](auto& state) { effect(state, on); }};
  };
  return row;
}

Setting turningOff(const Switch& it) {
  return turning(it, false, it.name + "Off", calling(it.set, false));
}

const Switch kSbas{.name = "SbasConfigure",
                   .set = &Driver::gpsObtSbasConfigure,
                   .title = "62 01: Configure SBAS parameters of GNSS receiver ",
                   .on = "A0 A1 00 09 62 01 01 01 08 01 03 07 00 6E 0D 0A",
                   .off = "A0 A1 00 09 62 01 00 01 08 01 03 07 00 6F 0D 0A",
                   .settle = 100ms,
                   .query = kQuerySbas,
                   .repliesOn = "A0 A1 00 08 62 80 01 01 08 01 03 07 EF 0D 0A",
                   .repliesOff = "A0 A1 00 08 62 80 00 01 08 01 03 07 EE 0D 0A",
                   .shortReply = {"A0 A1 00 02 62 80 E2 0D 0A"},
                   .effect = [](auto& state, bool on) { state.sbas = {on, 1, 8, 1, 3, 7}; }};

const Switch kQzss{.name = "QzssConfigure",
                   .set = &Driver::gpsObtQzssConfigure,
                   .title = "62 03: Configure QZSS parameters of GNSS receiver ",
                   .on = "A0 A1 00 05 62 03 01 03 00 63 0D 0A",
                   .off = "A0 A1 00 05 62 03 00 03 00 62 0D 0A",
                   .settle = 100ms,
                   .query = kQueryQzss,
                   .repliesOn = "A0 A1 00 04 62 81 01 03 E1 0D 0A",
                   .repliesOff = "A0 A1 00 04 62 81 00 03 E0 0D 0A",
                   .shortReply = {"A0 A1 00 02 62 81 E3 0D 0A"},
                   .effect = [](auto& state, bool on) {
                     state.qzss = {on, 3};
                   }};

const Switch kSecondBand{.name = "L2BandConfigure",
                         .set = &Driver::gpsObtL2BandConfigure,
                         .title = "64 50: Enable/Disable second band of GNSS receiver ",
                         .on = "A0 A1 00 04 64 50 01 00 35 0D 0A",
                         .off = "A0 A1 00 04 64 50 00 00 34 0D 0A",
                         .settle = 50ms,
                         .query = kQuerySecondBand,
                         .repliesOn = "A0 A1 00 03 64 9F 01 FA 0D 0A",
                         .repliesOff = "A0 A1 00 03 64 9F 00 FB 0D 0A",
                         .shortReply = {"A0 A1 00 02 64 9F FB 0D 0A"},
                         .effect = [](auto& state, bool on) { state.secondBand = on; }};

// GLONASS is bit 6 for the interface and bit 1 for the receiver; GPS, Galileo and BeiDou are bits
// 0, 2 and 3 for both.
std::uint16_t receiverMask(unsigned int mask) {
  return static_cast<std::uint16_t>((mask & 0x0D) + (mask / 0x40 % 2) * 2);
}
unsigned int interfaceMask(unsigned int mask) { return (mask & 0x0D) + (mask / 2 % 2) * 0x40; }

Drawn drawConstellations(Numbers& numbers) {
  const auto mask = numbers.between<unsigned short>(0, 0xFFFF);
  return {calling(&Driver::gpsObtGnssConfigure, mask), 0,
          [=](auto& state) { state.constellations = receiverMask(mask); }};
}

// SBAS and QZSS always go off; the second band is set where it is named.
Drawn drawGnssSystem(Numbers& numbers) {
  const auto mask = numbers.between<unsigned short>(0, 0xFFFF);
  const auto effect = [=](auto& state) {
    state.constellations = receiverMask(mask);
    kSbas.effect(state, false);
    kQzss.effect(state, false);
  };
  if (numbers.coin()) {
    return {[=](auto& driver) { return Outcome(driver.setGnssSystem(mask)); }, 0, effect};
  }
  const bool secondBand = numbers.coin();
  return {[=](auto& driver) { return Outcome(driver.setGnssSystem(mask, secondBand)); }, 0,
          [=](auto& state) {
            effect(state);
            kSecondBand.effect(state, secondBand);
          }};
}

// A byte that tells whether a switch is on: for any value but 0.
Query readingSwitch(const std::string& name, unsigned int (Driver::*member)(bool&),
                    const Switch& it, const std::vector<Reading>& readings,
                    const std::function<bool(const sim::State&)>& inState) {
  return {.name = name,
          .call = reading(member, true),
          .sends = it.query,
          .reply = {it.repliesOff, {0, "false"}},
          .shortReply = {it.shortReply, {0, "false"}},
          .untouched = "true",
          .readings = readings,
          .decoded = [](auto& reply) { return text(reply.u8(2) != 0); },
          .inState = [=](auto& state) { return text(inState(state)); }};
}

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  return {
      // In the receiver's numbering.
      {.name = "GetGnssConfigure",
       .call = reading(&Driver::gpsObtGetGnssConfigure, 0xABCD),
       .sends = kQueryConstellations,
       .reply = {"A0 A1 00 04 64 8C 12 34 CE 0D 0A", {0, "4660"}},
       .shortReply = {"A0 A1 00 03 64 8C 12 FA 0D 0A", {0, "4608"}},
       .untouched = "43981",
       .readings = {{"00 00", "0"},
                    {"00 02", "2"},
                    {"00 FF", "255"},
                    {"80 00", "32768"},
                    {"FF FF", "65535"}},
       .decoded = [](auto& reply) { return text(reply.u16(2)); },
       .inState = [](auto& state) { return text(state.constellations); }},
      // In the interface's, and added to what the caller's mask holds: 0x100.
      {.name = "GetGnssSystem",
       .call = reading(&Driver::getGnssSystem, 0x100),
       .sends = kQueryConstellations,
       .reply = {"A0 A1 00 04 64 8C 00 0B E3 0D 0A", {0, "329"}},
       .shortReply = {"A0 A1 00 02 64 8C E8 0D 0A", {0, "256"}},
       .untouched = "256",
       .readings = {{"00 01", "257"},
                    {"00 02", "320"},
                    {"00 04", "260"},
                    {"00 08", "264"},
                    {"00 10", "256"},
                    {"00 20", "256"},
                    {"00 40", "256"},
                    {"FF F0", "256"},
                    {"FF FF", "333"}},
       .decoded = [](auto& reply) { return text(0x100 + interfaceMask(reply.u16(2))); },
       .inState = [](auto& state) { return text(0x100 + interfaceMask(state.constellations)); }},
      // Bits that the caller's mask holds stay, also those of constellations that are off.
      {.name = "GetGnssSystemIntoAFullMask",
       .call = reading(&Driver::getGnssSystem, 0xFFFF),
       .sends = kQueryConstellations,
       .reply = {"A0 A1 00 04 64 8C 00 00 E8 0D 0A", {0, "65535"}},
       .shortReply = {"A0 A1 00 02 64 8C E8 0D 0A", {0, "65535"}},
       .untouched = "65535",
       .decoded = [](auto&) { return text(65535); }},
      readingSwitch("GetSbasConfigure", &Driver::gpsObtGetSbasConfigure, kSbas,
                    {{"01 01 08 01 03 07", "true"},
                     {"02 00 00 00 00 00", "true"},
                     {"80 00 00 00 00 00", "true"},
                     {"FF FF FF FF FF FF", "true"},
                     {"00 FF FF FF FF FF", "false"}},
                    [](auto& state) { return state.sbas[0] != 0; }),
      readingSwitch("GetQzssConfigure", &Driver::gpsObtGetQzssConfigure, kQzss,
                    {{"01 03", "true"},
                     {"02 00", "true"},
                     {"80 00", "true"},
                     {"FF FF", "true"},
                     {"00 FF", "false"}},
                    [](auto& state) { return state.qzss[0] != 0; }),
      readingSwitch("GetL2BandConfigure", &Driver::gpsObtGetL2BandConfigure, kSecondBand,
                    {{"01", "true"}, {"02", "true"}, {"80", "true"}, {"FF", "true"}},
                    [](auto& state) { return state.secondBand != 0; }),
  };
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
std::vector<Setting> settings() {
  const auto mask = [](unsigned short value) {
    return calling(&Driver::gpsObtGnssConfigure, value);
  };
  return {
      {.name = "GnssConfigure",
       .call = mask(0x4D),
       .sends = {kAllConstellations, kConfigureConstellations},
       .settle = 100ms,
       .reads = kQueryConstellations,
       .reply = {"A0 A1 00 04 64 8C 00 0F E7 0D 0A"},
       .otherReply = {"A0 A1 00 04 64 8C 00 4D A5 0D 0A"},  // the mask as it was given
       .shortReply = {"A0 A1 00 03 64 8C 00 E8 0D 0A"},
       .mismatches = {"01 0F"},
       .values = {{mask(0x0001), "A0 A1 00 05 64 19 00 01 00 7C 0D 0A"},  // GPS
                  {mask(0x0002), kNoConstellations},                      // SBAS
                  {mask(0x0004), "A0 A1 00 05 64 19 00 04 00 79 0D 0A"},  // GALILEO
                  {mask(0x0008), "A0 A1 00 05 64 19 00 08 00 75 0D 0A"},  // BEIDOU
                  {mask(0x0010), kNoConstellations},                      // IMES
                  {mask(0x0020), kNoConstellations},                      // QZSS
                  {mask(0x0040), "A0 A1 00 05 64 19 00 02 00 7F 0D 0A"},  // GLONASS
                  {mask(0x0080), kNoConstellations},
                  {mask(0x0100), kNoConstellations},
                  {mask(0x8000), kNoConstellations},
                  {mask(0xFFFF), kAllConstellations}},
       .draw = drawConstellations},
      // An unanswered read-back leaves the mask empty.
      {.name = "GnssConfigureToNone",
       .call = mask(0),
       .sends = {kNoConstellations, kConfigureConstellations},
       .settle = 100ms,
       .reads = kQueryConstellations,
       .reply = {"A0 A1 00 04 64 8C 00 00 E8 0D 0A"},
       .otherReply = {"A0 A1 00 04 64 8C 01 00 E9 0D 0A"},
       .shortReply = {"A0 A1 00 02 64 8C E8 0D 0A", {0}},
       .noReply = {4}},
      turningOn(kSbas),
      turningOff(kSbas),
      turning(kSbas, false, "ConfigureSBAS", calling(&Driver::configureSBAS)),
      turningOn(kQzss),
      turningOff(kQzss),
      turningOn(kSecondBand),
      turningOff(kSecondBand),
  };
}

}  // namespace

Family constellations() {
  return {.queries = queries(),
          .settings = settings(),
          .composites = {{"SetGnssSystem", {0x648C, 0x6280, 0x6281, 0x649F}, drawGnssSystem}}};
}

}  // namespace orb::test
