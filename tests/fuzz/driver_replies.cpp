// What the driver's queries make of a reply. Input: the query, what is wrong with the checksum,
// where the reply is cut in two, its payload after the message's id.

#include <string>
#include <vector>

#include "operations/operations.h"
#include "orb-sim/frame.h"
#include "support/check.h"
#include "support/input.h"
#include "support/scripted_device.h"

namespace orb::test {
namespace {

std::string shown(const Outcome& outcome) {
  return std::to_string(outcome.result) + " | " + outcome.outputs;
}

constexpr int kHeaderLength = 4;
constexpr int kTrailerLength = 3;  // checksum and end bytes

}  // namespace

void tryInput(Input input) {
  constexpr std::size_t kLongestBody = 600;
  static const std::vector<Query>& queries = everyOperation().queries;
  const Query& query = queries[input.byte() % queries.size()];
  const std::uint8_t damage = input.byte();
  const std::uint8_t cut = input.byte();
  const sim::Bytes body = input.bytes(kLongestBody);
  sim::Bytes packet = sim::frame(messageIn(query.reply.packet), body);
  const Payload payload(sim::Bytes(packet.begin() + kHeaderLength, packet.end() - kTrailerLength));
  packet[packet.size() - kTrailerLength] ^= damage;

  std::vector<ScriptedDevice::Piece> script;
  for (const sim::Bytes& piece : inPieces(packet, {cut})) {
    script.push_back({piece});
  }
  ScriptedDevice line(std::move(script));
  Driver driver;
  Outcome expected(query.noReply.result);
  expected.outputs = query.untouched;
  if (damage == 0) {
    expected = Outcome(0);
    expected.outputs = query.decoded(payload);
  }
  checkEqual(shown(query.call(driver)), shown(expected), "the outcome of " + query.name);
}

}  // namespace orb::test
