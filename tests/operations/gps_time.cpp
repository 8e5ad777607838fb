#include "operations/operation.h"

namespace orb::test {

namespace {

/// What is printed after the fields: the first fifteen bytes of the reply, from its id on.
std::string dump(const std::string& bytes) {
  std::string lines;
  for (std::size_t i = 0; i < 15; ++i) {
    lines += std::to_string(i) + " 0x" + bytes.substr(3 * i, 2) + "\n";
  }
  return lines + "\n";
}

std::string fields(const std::string& timeOfWeek, const std::string& fraction,
                   const std::string& week, const std::string& leapSeconds,
                   const std::string& valid) {
  return "Tow : " + timeOfWeek + "\nsTow : " + fraction + "\nweek : " + week +
         "\nnCurrentLeap : " + leapSeconds + "\nvalid : " + valid + "\n";
}

Reading read(const std::string& body, const std::string& outputs,
             const std::string& printedFields) {
  return {body, outputs, printedFields + dump("64 8E " + body)};
}

}  // namespace

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
// Numbers are read as unsigned, and printed as signed.
Family gpsTime() {
  return {
      .queries = {
          {.name = "GetGpsTime",
           .call = reading(&Driver::gpsObtGetGpsTime, 71, 72, 73, 74, 75),
           .sends = {"A0 A1 00 02 64 20 44 0D 0A", "64 20: Query GPS time of GNSS receiver "},
           .reply = {"A0 A1 00 0F 64 8E 00 05 26 5C 00 00 01 F4 08 FC 12 12 07 93 0D 0A",
                     {0, "337500, 500, 2300, 18, 7",
                      fields("337500", "500", "2300", "18", "7") +
                          dump("64 8E 00 05 26 5C 00 00 01 F4 08 FC 12 12 07")}},
           .shortReply = {"A0 A1 00 04 64 8E 12 34 CC 0D 0A",
                          {0, "305397760, 0, 0, 0, 0",
                           fields("305397760", "0", "0", "0", "0") +
                               dump("64 8E 12 34 00 00 00 00 00 00 00 00 00 00 00")}},
           .untouched = "71, 72, 73, 74, 75",
           .readings = {read("01 02 03 04 05 06 07 08 09 0A 0B 0C 0D",
                             "16909060, 84281096, 2314, 11, 13",
                             fields("16909060", "84281096", "2314", "11", "13")),
                        // The current leap seconds, not those to come.
                        read("00 05 26 5C 00 00 01 F4 08 FC 12 13 07", "337500, 500, 2300, 18, 7",
                             fields("337500", "500", "2300", "18", "7")),
                        read("FF FF FF FF FF FF FF FF FF FF FF FF FF",
                             "4294967295, 4294967295, 65535, 255, 255",
                             fields("-1", "-1", "65535", "255", "255")),
                        read("80 00 00 00 80 00 00 00 80 00 80 80 80",
                             "2147483648, 2147483648, 32768, 128, 128",
                             fields("-2147483648", "-2147483648", "32768", "128", "128")),
                        read("7F FF FF FF 7F FF FF FF 7F FF 7F 7F 7F",
                             "2147483647, 2147483647, 32767, 127, 127",
                             fields("2147483647", "2147483647", "32767", "127", "127")),
                        read("00 00 00 01 00 00 00 01 00 01 01 00 01", "1, 1, 1, 1, 1",
                             fields("1", "1", "1", "1", "1")),
                        // A long reply is not dumped beyond its fields.
                        read("00 05 26 5C 00 00 01 F4 08 FC 12 12 07 AA BB",
                             "337500, 500, 2300, 18, 7",
                             fields("337500", "500", "2300", "18", "7"))},
           .decoded =
               [](auto& reply) {
                 return text(reply.u32(2), reply.u32(6), reply.u16(10), reply.u8(12), reply.u8(14));
               },
           .inState =
               [](auto& state) {
                 return "*, *, " + text(state.time.week, state.time.leapSeconds, state.time.valid);
               }},
      }};
}

}  // namespace orb::test
