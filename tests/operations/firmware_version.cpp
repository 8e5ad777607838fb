#include <algorithm>

#include "operations/operation.h"

namespace orb::test {

namespace {

const Sent kQueryRevision{"A0 A1 00 02 02 00 02 0D 0A",
                          "02 00: Query revision information of software"};

// Kernel 1.0.12, ODM 1.2.0, revision 2024.3.15. Every byte that is not used has a value.
constexpr const char* kRevision = "A0 A1 00 0E 80 F1 F2 01 00 0C F3 01 02 00 F4 18 03 0F 9E 0D 0A";
constexpr const char* kEmptyRevision = "A0 A1 00 01 80 80 0D 0A";

/// What the query leaves: the text that it appends to, and the driver's members.
std::string remembered(const std::string& kernel, const std::string& odm,
                       const std::string& revision, int number) {
  return text("beforeKernelVersion " + kernel + ": ODMVersion " + odm + ": Revision " + revision,
              kernel, odm, revision, number);
}

Call readingInto(unsigned int (Driver::*member)(std::string&)) {
  return [=](Driver& driver) {
    driver.kernelVersion = "old kernel";
    driver.odmVersion = "old ODM";
    driver.revision = "old revision";
    driver.revisionNumber = 1;
    std::string info = "before";
    const unsigned int result = (driver.*member)(info);
    return Outcome(result, info, driver.kernelVersion, driver.odmVersion, driver.revision,
                   driver.revisionNumber);
  };
}

std::string prints(const std::string& number) { return "nOrbRevision " + number + "\n"; }

std::string version(const Payload& reply, std::size_t index) {
  return std::to_string(reply.u8(index)) + '.' + std::to_string(reply.u8(index + 1)) + '.' +
         std::to_string(reply.u8(index + 2));
}

std::string decodedMembers(const Payload& reply) {
  const std::string digits = "20" + std::to_string(reply.u8(11)) + std::to_string(reply.u8(12)) +
                             std::to_string(reply.u8(13));
  const long long number = std::min(std::stoll(digits), 2147483647LL);
  return remembered(version(reply, 3), version(reply, 7), "20" + version(reply, 11),
                    static_cast<int>(number));
}

// What is read by mistake would stay in the driver, so these are not drawn at random.
Query rememberingVersion(const std::string& name, unsigned int (Driver::*member)(std::string&)) {
  return {.name = name,
          .call = readingInto(member),
          .sends = kQueryRevision,
          .reply = {kRevision,
                    {0, remembered("1.0.12", "1.2.0", "2024.3.15", 2024315), prints("2024315")}},
          .shortReply = {kEmptyRevision,
                         {0, remembered("0.0.0", "0.0.0", "200.0.0", 20000), prints("20000")}},
          .untouched = R"("before", "old kernel", "old ODM", "old revision", 1)",
          .readings =
              {// Nothing is padded, and the numbers do not sort by date.
               {"00 00 00 00 00 00 00 00 00 00 05 01 02",
                remembered("0.0.0", "0.0.0", "205.1.2", 20512), prints("20512")},
               {"00 00 01 00 0C 00 01 02 00 00 18 0B 05",
                remembered("1.0.12", "1.2.0", "2024.11.5", 2024115), prints("2024115")},
               // 20255255255 is more than 32 bits hold.
               {"00 00 FF FF FF 00 FF FF FF 00 FF FF FF",
                remembered("255.255.255", "255.255.255", "20255.255.255", 2147483647),
                prints("2147483647")},
               // The checksum, which stands after the last byte, is not taken for a value.
               {"00 00 01 00 0C 00 01 02 00 00 18 03",
                remembered("1.0.12", "1.2.0", "2024.3.0", 202430), prints("202430")}},
          .decoded = decodedMembers};
}

}  // namespace

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
Family firmwareVersion() {
  return {
      .queries = {
          rememberingVersion("GetInfo", &Driver::getInfo),
          rememberingVersion("GetFwVersion", &Driver::gpsObtGetFwVersion),
          // As three texts, which do not stay in the driver.
          {.name = "GetLabelledFwVersion",
           .call = reading(&Driver::gpsOrbGetFwVersion, "before", "before too", "and before"),
           .sends = kQueryRevision,
           .reply = {kRevision,
                     {0, R"("KernelVersion: 1.0.12", "ODMVersion: 1.2.0", "Revision: 2024.3.15")"}},
           .shortReply = {kEmptyRevision,
                          {0,
                           R"("KernelVersion: 0.0.0", "ODMVersion: 0.0.0", "Revision: 200.0.0")"}},
           .untouched = R"("before", "before too", "and before")",
           .readings = {{"00 00 00 00 00 00 00 00 00 00 05 01 02",
                         R"("KernelVersion: 0.0.0", "ODMVersion: 0.0.0", "Revision: 205.1.2")"}},
           .decoded =
               [](auto& reply) {
                 return text("KernelVersion: " + version(reply, 3),
                             "ODMVersion: " + version(reply, 7),
                             "Revision: 20" + version(reply, 11));
               },
           .inState =
               [](auto& state) {
                 const sim::Identity& identity = state.identity;
                 const auto dotted = [](int x, int y, int z) {
                   return std::to_string(x) + '.' + std::to_string(y) + '.' + std::to_string(z);
                 };
                 const auto& [kernel, odm, year, month, day, extension] = identity;
                 return text("KernelVersion: " + dotted(kernel.x, kernel.y, kernel.z),
                             "ODMVersion: " + dotted(odm.x, odm.y, odm.z),
                             "Revision: 20" + dotted(year, month, day));
               }},
          // Its text is not handed out.
          {.name = "GetFwVersionString",
           .call = calling(&Driver::gpsObtGetFwVersionString, "caller's own"),
           .sends = {"A0 A1 00 02 64 7D 19 0D 0A",
                     "64 7D: Query version extension string of GNSS receiver "},
           .reply = {"A0 A1 00 09 64 FE 4F 52 42 2D 53 49 4D BF 0D 0A", {0}},
           .shortReply = {"A0 A1 00 02 64 FE 9A 0D 0A", {0}},
           .inState = [](auto&) { return ""; }},
      }};
}

}  // namespace orb::test
