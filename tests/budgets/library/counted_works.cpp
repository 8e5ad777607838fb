// The works whose instructions count_instructions.py counts. Run by callgrind, which starts with
// counting switched off and writes a file at each dump.

#include <valgrind/callgrind.h>

#include <chrono>
#include <memory>
#include <stdexcept>

#include "../delayed_reply.h"
#include "orb-gnss/catalogue.h"
#include "orb-gnss/message_builder.h"
#include "orb-gnss/module_driver.h"
#include "support/wall_clock.h"

namespace {

using namespace std::chrono_literals;
using orb::test::Bytes;

constexpr unsigned char kReplyId = 0x83;
constexpr unsigned long kKibi = 1024;
constexpr unsigned long kFrames = 10;

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

// Packets of this payload length, one right after the other.
Bytes frames(unsigned long payloadLength) {
  const ORBMessage message(0xA800, payloadLength, nullptr);
  Bytes bytes;
  for (unsigned long frame = 0; frame < kFrames; ++frame) {
    append(bytes, message);
  }
  return bytes;
}

// The same packets, each with a bit wrong in the last byte of its body.
Bytes damagedFrames(unsigned long payloadLength) {
  constexpr unsigned long kAfterBody = 3;  // checksum and end bytes
  Bytes bytes = frames(payloadLength);
  const unsigned long packetLength = bytes.size() / kFrames;
  for (unsigned long end = packetLength; end <= bytes.size(); end += packetLength) {
    bytes[end - kAfterBody - 1] ^= 1;
  }
  return bytes;
}

void countFrames(const char* name, unsigned long payloadLength) {
  const Bytes bytes = frames(payloadLength);
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

// All start bytes, and after them what no packet has: ids that nobody knows.
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
  count("construct-driver", [] { std::make_unique<orbController_QN4470T01>(); });
}

// A query whose reply comes in two pieces. The system calls that the library makes for it end in
// this program, so that it is the same each time.
void countQuery(const char* name, int emptyLooks, std::chrono::nanoseconds slept) {
  orb::test::TtyCalls calls("/dev/null");
  calls.settingsFound = termios{};
  calls.settingResult = 0;
  const orb::test::WallClock clock;
  const orb::test::SimulatedSleep sleep;
  orb::test::DelayedReply reply(
      calls, sleep, {orb::test::hex("A0 A1 00 04 B0"), orb::test::hex("01 05 14 A0 0D 0A")});
  orbController_QN4470T01 driver;
  count(name, [&] {
    unsigned int mode = 0;
    unsigned int elevation = 0;
    unsigned int cnr = 0;
    reply.comeAfter(emptyLooks, slept);
    if (driver.gpsOrbGetElevConfigure(mode, elevation, cnr) != 0 || cnr != 20) {
      throw std::logic_error("the query was not answered");
    }
  });
}

}  // namespace

int main() {
  countFrames("frames-20", 20);
  countFrames("frames-59", 59);
  countScan("damaged-frames", damagedFrames(20));
  countScan("text", Bytes(kKibi, '$'));
  countScan("noise", noise(kKibi));
  countScan("unknown-packets", unknownPackets(kKibi));
  countScan("rescan-nothing-found", Bytes(5 * kKibi, '$'));
  countLookup("lookup-first", {0x00, 0x00});
  countLookup("lookup-last", {0xC3, 0x00});
  countLookup("lookup-miss", {0x64, 0x00});
  countConstruction();
  countQuery("query-answered-after-20-looks", 20, 0ms);
  countQuery("query-answered-after-20-ms", 0, 20ms);
  return 0;
}
