// What the driver's queries make of a reply. Input: the query, what is wrong with the checksum,
// where the reply is cut in two, its payload behind the message's id.

#include <string>
#include <vector>

#include "support/check.h"
#include "support/driver_queries.h"
#include "support/scripted_device.h"

namespace orb::test {
namespace {

Bytes payloadOf(ORBMessageMsgValue type, const Bytes& body) {
  Bytes payload{static_cast<std::uint8_t>(type >> 8)};
  if ((type & 0xFF) != 0) {
    payload.push_back(static_cast<std::uint8_t>(type));
  }
  payload.insert(payload.end(), body.begin(), body.end());
  return payload;
}

Bytes packetOf(const Bytes& payload, std::uint8_t damage) {
  std::uint8_t sum = damage;
  for (const std::uint8_t byte : payload) {
    sum = static_cast<std::uint8_t>(sum ^ byte);
  }
  Bytes packet{0xA0, 0xA1, static_cast<std::uint8_t>(payload.size() >> 8),
               static_cast<std::uint8_t>(payload.size())};
  packet.insert(packet.end(), payload.begin(), payload.end());
  packet.insert(packet.end(), {sum, 0x0D, 0x0A});
  return packet;
}

void query(Input input) {
  constexpr std::size_t kLongestBody = 600;
  const std::size_t number = input.byte() % driverQueries().size();
  const DriverQuery& query = driverQueries()[number];
  const std::uint8_t damage = input.byte();
  const std::uint8_t cut = input.byte();
  const Bytes payload = payloadOf(query.reply, input.bytes(kLongestBody));

  std::vector<ScriptedDevice::Piece> script;
  for (const Bytes& piece : inPieces(packetOf(payload, damage), {cut})) {
    script.push_back({piece});
  }
  ScriptedDevice line(std::move(script));
  orbController_QN4470T01 driver;
  const std::string found = query.ask(driver);
  checkEqual(found, damage == 0 ? query.expected(Payload(payload)) : query.unanswered,
             "the outcome of query " + std::to_string(number));
}

}  // namespace
}  // namespace orb::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orb::test::query({data, size});
  return 0;
}
