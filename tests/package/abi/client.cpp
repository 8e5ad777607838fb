// A client of the release 0.1.0. check_client.sh compiles it with the headers of that release and
// runs it with today's library: what objects look like and where operations are is in the client.

#include <orb-gnss/control_interface.h>
#include <orb-gnss/controller.h>
#include <orb-gnss/message_builder.h>
#include <orb-gnss/message_list.h>
#include <orb-gnss/module_driver.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <new>
#include <string>

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
  if (!holds) {
    std::cerr << "failed: " << what << '\n';
    ++failures;
  }
}

/// An object that the client has made room for, between bytes that are not the library's.
template <typename T>
class Framed {
 public:
  template <typename... Arguments>
  explicit Framed(Arguments... arguments) {
    memory_.fill(kFiller);
    object_ = new (memory_.data() + kFrame) T(arguments...);
  }
  Framed(const Framed&) = delete;
  Framed& operator=(const Framed&) = delete;
  ~Framed() { object_->~T(); }

  T* operator->() { return object_; }
  T& operator*() { return *object_; }

  bool isIntact() const {
    const auto isFiller = [](unsigned char byte) { return byte == kFiller; };
    return std::all_of(memory_.begin(), memory_.begin() + kFrame, isFiller) &&
           std::all_of(memory_.end() - kFrame, memory_.end(), isFiller);
  }

 private:
  static constexpr unsigned char kFiller = 0xA5;
  static constexpr int kFrame = 256;

  alignas(T) std::array<unsigned char, sizeof(T) + 2 * kFrame> memory_;
  T* object_;
};

void readsMessages() {
  Framed<ORBMessageList> list;
  Framed<ORBMessageBuilder> builder(&*list);
  const unsigned char packet[] = {0xA0, 0xA1, 0x00, 0x02, 0x83, 0x02, 0x81, 0x0D, 0x0A};
  builder->update(0, packet, sizeof packet);
  expect(builder->getGoodMessageCount() == 1 && builder->getAckMessageCount() == 1, "counters");
  const std::unique_ptr<ORBMessage> message(list->getMessage());
  expect(message && message->getMsgSidId() == 0x8300 && message->getByte(0) == 0x02, "a message");
  Framed<ORBMessage> copy(*message);
  expect(copy->setByte(0, 0x04) == 0x04 && copy->getPacketData()[5] == 0x04, "a copy");
  expect(list.isIntact() && builder.isIntact() && copy.isIntact(), "sizes of the message classes");
}

/// By first and last slots, and some of those in between, with values of each kind.
void speaksThrough(ORBControlInterface& receiver) {
  receiver.Init();
  expect(receiver.save() == 0 && receiver.load() == 0, "the first slots");
  std::string info;
  expect(receiver.getInfo(info) == 0 && info.find("Revision 2024.3.15") != std::string::npos,
         "getInfo");
  unsigned char limit = 0;
  expect(
      receiver.setElevationLimit(12) == 0 && receiver.getElevationLimit(limit) == 0 && limit == 12,
      "setElevationLimit");
  signed char minimum = 0;
  expect(receiver.setMinCNo(21) == 0 && receiver.getMinCNo(minimum) == 0 && minimum == 21,
         "setMinCNo");
  unsigned char mode = 0;
  double latitude = 0, longitude = 0, altitude = 0, reserved = 0;
  unsigned int length = 0;
  float deviation = 0;
  expect(receiver.setSurveyStatic(48.5, 9.25, 400, 3) == 0 &&
             receiver.getSurveyInfo(mode, latitude, longitude, altitude, reserved, length,
                                    deviation) == 0 &&
             latitude == 48.5 && longitude == 9.25 && altitude == 400,
         "setSurveyStatic");
  expect(!receiver.timeStamp().empty(), "timeStamp");
  expect(receiver.gpsObtChipDetect() == 1, "gpsObtChipDetect");
  expect(receiver.gpsObtSetMsgType("BINARY") == 0, "the last slot");
}

}  // namespace

int main() {
  readsMessages();
  {
    Framed<orbController> facade;
    expect(facade->IsOrbitek(), "the receiver is found");
    speaksThrough(*facade);
    std::string info = "KernelVersion 1.0.12: ODMVersion 1.2.0: ";
    expect(facade->parserGnssChipInfo(info) == 0 && facade->odmVersionField() == "ODMVersion 1.2.0",
           "fields");
    expect(facade->setAntennaPower("ON") == 0, "setAntennaPower");
    expect(facade.isIntact(), "the facade's size");
  }
  Framed<orbController_QN4470T01> driver;
  speaksThrough(*driver);
  expect(driver.isIntact(), "the driver's size");
  return failures == 0 ? 0 : 1;
}
