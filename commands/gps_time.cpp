#include <cstdio>

#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;

namespace {

constexpr unsigned long kReplyLength = 15;

void printField(const char* name, unsigned int value) {
  std::printf("%s : %d\n", name, static_cast<int>(value));
}

void printBytes(const Reply& reply) {
  for (unsigned long i = 0; i < kReplyLength; ++i) {
    std::printf("%d 0x%02X\n", static_cast<int>(i), unsigned{reply.u8(i)});
  }
  std::printf("\n");
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetGpsTime(unsigned int& Tow, unsigned int& sTow,
                                                       unsigned int& week,
                                                       unsigned int& nCurrentLeap,
                                                       unsigned int& valid) {
  return exchange().query(Command(message::kQueryGpsTime), [&](const Reply& reply) {
    Tow = reply.u32(2);
    sTow = reply.u32(6);
    week = reply.u16(10);
    nCurrentLeap = reply.u8(12);
    valid = reply.u8(14);

    printField("Tow", Tow);
    printField("sTow", sTow);
    printField("week", week);
    printField("nCurrentLeap", nCurrentLeap);
    printField("valid", valid);
    printBytes(reply);
  });
}
