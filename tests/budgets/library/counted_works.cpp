// The works whose instructions count_instructions.py counts. Run by callgrind, which starts with
// counting switched off and writes a file at each dump.

#include <valgrind/callgrind.h>

#include <memory>
#include <vector>

#include "orb-gnss/catalogue.h"
#include "orb-gnss/message_builder.h"
#include "orb-gnss/module_driver.h"
#include "orb-sim/path_map.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kReplyId = 0x83;
constexpr unsigned long kKibi = 1024;

// The first run binds the library's calls and warms its memory up.
template <typename Work>
void count(const char* name, Work work) {
  work();
  CALLGRIND_START_INSTRUMENTATION;
  work();
  CALLGRIND_STOP_INSTRUMENTATION;
  CALLGRIND_DUMP_STATS_AT(name);
}

void append(Bytes& bytes, const ORBMessage& message) {
  bytes.insert(bytes.end(), message.getPacketData(),
               message.getPacketData() + message.getPacketLength());
}

// One packet of this payload length, between two others so that it is found as in a stream.
void countFrame(const char* name, unsigned long payloadLength) {
  const ORBMessage message(0xA800, payloadLength, nullptr);
  Bytes bytes;
  for (int packets = 0; packets < 10; ++packets) {
    append(bytes, message);
  }
  ORBMessageList list;
  ORBMessageBuilder builder(&list);
  count(name, [&] {
    builder.update(kReplyId, bytes.data(), bytes.size());
    list.Empty();
  });
}

void countScan(const char* name, const Bytes& bytes) {
  ORBMessageList list;
  ORBMessageBuilder builder(&list);
  count(name, [&] { builder.update(kReplyId, bytes.data(), bytes.size()); });
}

// Every value as often as any other, so that each 256th byte is a start byte; none starts a packet.
Bytes noise(unsigned long length) {
  Bytes bytes;
  for (unsigned long i = 0; i < length; ++i) {
    bytes.push_back(static_cast<unsigned char>(i * 77));
  }
  return bytes;
}

// All start bytes, and behind them what no packet has: ids that nobody knows.
Bytes unknownPackets(unsigned long length) {
  const Bytes start{0xA0, 0xA1, 0x00, 0x02, 0x61, 0x00, 0x00, 0x00};
  Bytes bytes;
  while (bytes.size() < length) {
    bytes.insert(bytes.end(), start.begin(), start.end());
  }
  return bytes;
}

void countLookup(const char* name, ORBMsgId id) {
  count(name, [id] { orbGetMessageDescription(id, 0); });
}

void countConstruction() {
  orb::sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  count("construct-driver", [] { std::make_unique<orbController_QN4470T01>(); });
}

}  // namespace

int main() {
  countFrame("frames-20", 20);
  countFrame("frames-59", 59);
  countScan("text", Bytes(kKibi, '$'));
  countScan("noise", noise(kKibi));
  countScan("unknown-packets", unknownPackets(kKibi));
  countScan("rescan-nothing-found", Bytes(5 * kKibi, '$'));
  countLookup("lookup-first", {0x00, 0x00});
  countLookup("lookup-last", {0xC3, 0x00});
  countLookup("lookup-miss", {0x64, 0x00});
  countConstruction();
  return 0;
}
