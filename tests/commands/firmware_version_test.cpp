#include <gtest/gtest.h>

#include <chrono>
#include <iostream>
#include <string>

#include "orb-gnss/module_driver.h"
#include "support/captured_stream.h"
#include "support/receiver_test.h"

namespace {

using orb::test::bytes;
using orb::test::contentOf;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::StampedDriver;
using orb::test::standardErrorOf;
using orb::test::standardOutputOf;
using namespace std::chrono_literals;

constexpr const char* kQuery = "A0 A1 00 02 02 00 02 0D 0A";
constexpr const char* kAcknowledgement = "A0 A1 00 02 83 02 81 0D 0A ";

// Kernel 1.0.12, ODM 1.2.0, revision 2024.3.15. Every byte that is not used has a value.
constexpr const char* kRevision = "A0 A1 00 0E 80 F1 F2 01 00 0C F3 01 02 00 F4 18 03 0F 9E 0D 0A";
constexpr const char* kRevisionDamaged =
    "A0 A1 00 0E 80 F1 F2 01 00 0C F3 01 02 00 F4 18 03 0F 00 0D 0A";

constexpr const char* kInfo = "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15";
constexpr const char* kPrint = "nOrbRevision 2024315\n";
constexpr const char* kNoReplyLine =
    "STAMP:  Did not receive : 02 00: Query revision information of software\n";
constexpr const char* kNotSentLine =
    "STAMP:  Could not send : 02 00: Query revision information of software\n";

class FirmwareVersion : public orb::test::ReceiverTest {
 protected:
  /// From now on the receiver answers the query with these bytes.
  void answer(const std::string& hexText) { gps_.script.on(0x0200).answer(bytes(hexText)); }

  /// What getInfo() makes of an empty text; it is to succeed and to print this.
  std::string infoPrinting(const std::string& output) {
    std::string info;
    EXPECT_EQ(standardOutputOf([&] { EXPECT_EQ(driver_.getInfo(info), 0u); }), output);
    return info;
  }

  StampedDriver driver_;
};

class FirmwareVersionWithoutDevice : public orb::test::NoReceiverTest {
 protected:
  StampedDriver driver_;
};

// As one text.

TEST_F(FirmwareVersion, IsOneLineOfText) {
  answer(kRevision);
  EXPECT_EQ(infoPrinting(kPrint), kInfo);
  EXPECT_EQ(sent(), kQuery);
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(FirmwareVersion, IsPrintedWithAFlush) {
  answer(kRevision);
  std::string info;
  orb::test::CapturedStream output(std::cout);
  EXPECT_EQ(driver_.getInfo(info), 0u);
  EXPECT_EQ(output.text(), kPrint);
  EXPECT_EQ(output.flushedText(), kPrint);
}

TEST_F(FirmwareVersion, IsPrintedInDecimalWhateverTheStreamIsSetTo) {
  answer(kRevision);
  std::string info;
  orb::test::CapturedStream output(std::cout);
  std::cout << std::hex << std::showbase;
  EXPECT_EQ(driver_.getInfo(info), 0u);
  EXPECT_EQ(output.text(), kPrint);
}

TEST_F(FirmwareVersion, StaysInTheDriver) {
  answer(kRevision);
  infoPrinting(kPrint);
  EXPECT_EQ(driver_.kernelVersion, "1.0.12");
  EXPECT_EQ(driver_.odmVersion, "1.2.0");
  EXPECT_EQ(driver_.revision, "2024.3.15");
  EXPECT_EQ(driver_.revisionNumber, 2024315);
}

TEST_F(FirmwareVersion, IsTheSameFromTheModulesOwnCommand) {
  answer(kRevision);
  std::string info = "Firmware: ";
  EXPECT_EQ(standardOutputOf([&] { EXPECT_EQ(driver_.gpsObtGetFwVersion(info), 0u); }), kPrint);
  EXPECT_EQ(info, std::string("Firmware: ") + kInfo);
  EXPECT_EQ(sent(), kQuery);
}

TEST_F(FirmwareVersion, IsAppended) {
  answer(kRevision);
  std::string info;
  EXPECT_EQ(standardOutputOf([&] {
              EXPECT_EQ(driver_.getInfo(info), 0u);
              EXPECT_EQ(driver_.getInfo(info), 0u);
            }),
            std::string(kPrint) + kPrint);
  EXPECT_EQ(info, std::string(kInfo) + kInfo);
}

TEST_F(FirmwareVersion, IsReadFromTheReceiver) {
  gps_.receiver.change([](orb::sim::State& state) { state.identity.odm = {9, 8, 7}; });
  EXPECT_EQ(infoPrinting(kPrint), "KernelVersion 1.0.12: ODMVersion 9.8.7: Revision 2024.3.15");
}

TEST_F(FirmwareVersion, IsThatOfTheLastQuery) {
  infoPrinting(kPrint);
  gps_.receiver.change([](orb::sim::State& state) {
    state.identity = {{2, 3, 4}, {5, 6, 7}, 25, 12, 31, "other"};
  });
  EXPECT_EQ(infoPrinting("nOrbRevision 20251231\n"),
            "KernelVersion 2.3.4: ODMVersion 5.6.7: Revision 2025.12.31");
  EXPECT_EQ(driver_.kernelVersion, "2.3.4");
  EXPECT_EQ(driver_.odmVersion, "5.6.7");
  EXPECT_EQ(driver_.revision, "2025.12.31");
  EXPECT_EQ(driver_.revisionNumber, 20251231);
}

// Numbers are written as they are, without padding.

TEST_F(FirmwareVersion, IsNotPadded) {
  answer("A0 A1 00 0E 80 00 00 00 00 00 00 00 00 00 00 05 01 02 86 0D 0A");
  EXPECT_EQ(infoPrinting("nOrbRevision 20512\n"),
            "KernelVersion 0.0.0: ODMVersion 0.0.0: Revision 205.1.2");
}

TEST_F(FirmwareVersion, HasNumbersThatDoNotSortByDate) {
  answer("A0 A1 00 0E 80 00 00 01 00 0C 00 01 02 00 00 18 0B 05 98 0D 0A");
  infoPrinting("nOrbRevision 2024115\n");
  EXPECT_EQ(driver_.revision, "2024.11.5");
  EXPECT_EQ(driver_.revisionNumber, 2024115);
}

// 20255255255 is more than 32 bits hold.
TEST_F(FirmwareVersion, HasTheLargestNumberWhenItsDigitsAreTooMany) {
  answer("A0 A1 00 0E 80 00 00 FF FF FF 00 FF FF FF 00 FF FF FF 7F 0D 0A");
  EXPECT_EQ(infoPrinting("nOrbRevision 2147483647\n"),
            "KernelVersion 255.255.255: ODMVersion 255.255.255: Revision 20255.255.255");
  EXPECT_EQ(driver_.revisionNumber, 2147483647);
}

// The reply on its way.

TEST_F(FirmwareVersion, MayComeBehindAnAcknowledgement) {
  answer(std::string(kAcknowledgement) + kRevision);
  EXPECT_EQ(infoPrinting(kPrint), kInfo);
}

TEST_F(FirmwareVersion, MayComeLate) {
  gps_.script.on(0x0200).answer(bytes(kRevision)).after(60ms);
  EXPECT_EQ(infoPrinting(kPrint), kInfo);
}

TEST_F(FirmwareVersion, MayComeByteByByte) {
  gps_.script.on(0x0200).answer(bytes(std::string(kAcknowledgement) + kRevision)).inPieces(1, 1ms);
  EXPECT_EQ(infoPrinting(kPrint), kInfo);
}

TEST_F(FirmwareVersion, MayComeBetweenOtherBytes) {
  answer(std::string("24 47 50 A1 A0 00 0D 0A ") + kRevision + " 24 47");
  EXPECT_EQ(infoPrinting(kPrint), kInfo);
}

// A damaged packet makes the wait last to the limit; then the good one is found.
TEST_F(FirmwareVersion, MayComeBehindADamagedReply) {
  answer(std::string(kRevisionDamaged) + " " + kRevision);
  letPass(5);
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(infoPrinting(kPrint), kInfo); }), kTimedOut);
  EXPECT_TRUE(hasWaitedToTheLimit());
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(FirmwareVersion, IsTheNewerOfTwoReplies) {
  answer(std::string("A0 A1 00 0E 80 00 00 00 00 00 00 00 00 00 00 05 01 02 86 0D 0A ") +
         kRevision);
  EXPECT_EQ(infoPrinting(kPrint), kInfo);
}

// The checksum, which stands behind the last byte of a short reply, is not taken for a value.
TEST_F(FirmwareVersion, ReadsBytesThatAShortReplyDoesNotHaveAsZero) {
  answer("A0 A1 00 0D 80 00 00 01 00 0C 00 01 02 00 00 18 03 95 0D 0A");
  EXPECT_EQ(infoPrinting("nOrbRevision 202430\n"),
            "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.0");
}

TEST_F(FirmwareVersion, ReadsAReplyWithoutBodyAsZeros) {
  answer("A0 A1 00 01 80 80 0D 0A");
  EXPECT_EQ(infoPrinting("nOrbRevision 20000\n"),
            "KernelVersion 0.0.0: ODMVersion 0.0.0: Revision 200.0.0");
}

// Failures.

TEST_F(FirmwareVersion, IsGivenUpAfterFiveSeconds) {
  gps_.script.on(0x0200).nothing();
  letPass(5);
  std::string info = "before";
  EXPECT_EQ(standardErrorOf([&] {
              EXPECT_EQ(standardOutputOf([&] { EXPECT_EQ(driver_.getInfo(info), 4u); }), "");
            }),
            kTimedOut);
  EXPECT_TRUE(hasWaitedToTheLimit());
  EXPECT_EQ(info, "before");
  EXPECT_EQ(contentOf(files_.errorLog), kNoReplyLine);
}

TEST_F(FirmwareVersion, IsNotInARefusal) {
  gps_.script.on(0x0200).refusal();
  letPass(5);
  std::string info;
  standardErrorOf([&] { EXPECT_EQ(driver_.getInfo(info), 4u); });
  EXPECT_EQ(info, "");
  EXPECT_EQ(contentOf(files_.errorLog), kNoReplyLine);
}

TEST_F(FirmwareVersion, StaysWhatItWasWhenNoReplyComes) {
  std::string info;
  standardOutputOf([&] { driver_.getInfo(info); });
  gps_.script.on(0x0200).nothing();
  letPass(5);
  standardErrorOf([&] { EXPECT_EQ(driver_.getInfo(info), 4u); });
  EXPECT_EQ(info, kInfo);
  EXPECT_EQ(driver_.kernelVersion, "1.0.12");
  EXPECT_EQ(driver_.odmVersion, "1.2.0");
  EXPECT_EQ(driver_.revision, "2024.3.15");
  EXPECT_EQ(driver_.revisionNumber, 2024315);
}

TEST_F(FirmwareVersion, StaysWhatItWasWhenTheQueryCannotBeSent) {
  std::string info;
  standardOutputOf([&] { driver_.getInfo(info); });
  files_.makeUnusable("/dev/tty_gps");
  standardErrorOf([&] { EXPECT_EQ(driver_.getInfo(info), 8u); });
  EXPECT_EQ(info, kInfo);
  EXPECT_EQ(driver_.kernelVersion, "1.0.12");
  EXPECT_EQ(driver_.odmVersion, "1.2.0");
  EXPECT_EQ(driver_.revision, "2024.3.15");
  EXPECT_EQ(driver_.revisionNumber, 2024315);
}

TEST_F(FirmwareVersionWithoutDevice, CannotBeAskedFor) {
  std::string info = "before";
  EXPECT_EQ(standardErrorOf([&] {
              EXPECT_EQ(standardOutputOf([&] { EXPECT_EQ(driver_.getInfo(info), 8u); }), "");
            }),
            kNoDevice);
  EXPECT_EQ(info, "before");
  EXPECT_EQ(driver_.revisionNumber, 0);
  EXPECT_EQ(contentOf(files_.errorLog), kNotSentLine);
}

// As three texts.

class LabelledVersion : public FirmwareVersion {
 protected:
  unsigned int read() { return driver_.gpsOrbGetFwVersion(kernel_, odm_, revision_); }

  std::string kernel_ = "kernel before";
  std::string odm_ = "ODM before";
  std::string revision_ = "revision before";
};

TEST_F(LabelledVersion, ReplacesTheTexts) {
  answer(kRevision);
  EXPECT_EQ(read(), 0u);
  EXPECT_EQ(kernel_, "KernelVersion: 1.0.12");
  EXPECT_EQ(odm_, "ODMVersion: 1.2.0");
  EXPECT_EQ(revision_, "Revision: 2024.3.15");
  EXPECT_EQ(sent(), kQuery);
}

TEST_F(LabelledVersion, IsNotPadded) {
  answer("A0 A1 00 0E 80 00 00 00 00 00 00 00 00 00 00 05 01 02 86 0D 0A");
  EXPECT_EQ(read(), 0u);
  EXPECT_EQ(kernel_, "KernelVersion: 0.0.0");
  EXPECT_EQ(odm_, "ODMVersion: 0.0.0");
  EXPECT_EQ(revision_, "Revision: 205.1.2");
}

TEST_F(LabelledVersion, PrintsNothingAndDoesNotStayInTheDriver) {
  EXPECT_EQ(standardOutputOf([&] { EXPECT_EQ(read(), 0u); }), "");
  EXPECT_EQ(driver_.kernelVersion, "");
  EXPECT_EQ(driver_.odmVersion, "");
  EXPECT_EQ(driver_.revision, "");
  EXPECT_EQ(driver_.revisionNumber, 0);
}

TEST_F(LabelledVersion, LeavesTheTextsWhenNoReplyComes) {
  gps_.script.on(0x0200).nothing();
  letPass(5);
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(read(), 4u); }), kTimedOut);
  EXPECT_TRUE(hasWaitedToTheLimit());
  EXPECT_EQ(kernel_, "kernel before");
  EXPECT_EQ(odm_, "ODM before");
  EXPECT_EQ(revision_, "revision before");
  EXPECT_EQ(contentOf(files_.errorLog), kNoReplyLine);
}

TEST_F(LabelledVersion, LeavesTheTextsWhenTheQueryCannotBeSent) {
  files_.makeUnusable("/dev/tty_gps");
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(read(), 8u); }), kNoDevice);
  EXPECT_EQ(kernel_, "kernel before");
  EXPECT_EQ(odm_, "ODM before");
  EXPECT_EQ(revision_, "revision before");
  EXPECT_EQ(contentOf(files_.errorLog), kNotSentLine);
}

// The version extension.

class VersionExtension : public FirmwareVersion {};

TEST_F(VersionExtension, IsAnswered) {
  const std::string text = "caller's own";
  EXPECT_EQ(standardOutputOf([&] { EXPECT_EQ(driver_.gpsObtGetFwVersionString(text), 0u); }), "");
  EXPECT_EQ(text, "caller's own");
  EXPECT_EQ(sent(), "A0 A1 00 02 64 7D 19 0D 0A");
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(VersionExtension, MayBeOfAnyLength) {
  gps_.script.on(0x647D).answer(bytes("A0 A1 00 02 64 FE 9A 0D 0A"));
  EXPECT_EQ(driver_.gpsObtGetFwVersionString(""), 0u);
}

TEST_F(VersionExtension, DoesNotStayInTheDriver) {
  EXPECT_EQ(driver_.gpsObtGetFwVersionString(""), 0u);
  EXPECT_EQ(driver_.revision, "");
  EXPECT_EQ(driver_.revisionNumber, 0);
}

TEST_F(VersionExtension, IsGivenUpAfterFiveSeconds) {
  gps_.script.on(0x647D).answer(bytes("A0 A1 00 02 83 64 E7 0D 0A"));
  letPass(5);
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(driver_.gpsObtGetFwVersionString(""), 4u); }),
            kTimedOut);
  EXPECT_TRUE(hasWaitedToTheLimit());
  EXPECT_EQ(contentOf(files_.errorLog),
            "STAMP:  Did not receive : "
            "64 7D: Query version extension string of GNSS receiver \n");
}

TEST_F(FirmwareVersionWithoutDevice, ExtensionCannotBeAskedFor) {
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(driver_.gpsObtGetFwVersionString(""), 8u); }),
            kNoDevice);
  EXPECT_EQ(contentOf(files_.errorLog),
            "STAMP:  Could not send : "
            "64 7D: Query version extension string of GNSS receiver \n");
}

}  // namespace
