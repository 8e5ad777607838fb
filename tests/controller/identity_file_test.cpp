#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "facade_parts.h"
#include "orb-gnss/controller.h"
#include "support/fake_board.h"
#include "support/receiver_test.h"

namespace {

using orb::test::contentOf;
using orb::test::fill;
using orb::test::standardErrorOf;
using namespace std::string_literals;

/// A device with the carrier module and a receiver that answers.
class IdentityFile : public orb::test::ReceiverTest {
 protected:
  orb::test::CarrierBoard board_;
};

TEST_F(IdentityFile, TellsTheRevisionOfTheReceiver) {
  orbController facade;
  facade.saveorbitekChipInfo();
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=OK\n"
            "orbitek_Info=Revision 2024.3.15\n");
}

TEST_F(IdentityFile, TellsThatThereIsNoReceiver) {
  board_.modules.clear();
  orbController facade;
  facade.saveorbitekChipInfo();
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=NO\n"
            "orbitek_Info=\n");
}

TEST_F(IdentityFile, HasNoInfoWhenTheReceiverDoesNotAnswerAnyMore) {
  orbController facade;
  gps_.script.on(0x0200).nothing();
  letPass(5);
  standardErrorOf([&] { facade.saveorbitekChipInfo(); });
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=OK\n"
            "orbitek_Info=\n");
}

TEST_F(IdentityFile, IsClosedAgain) {
  orbController facade;
  facade.saveorbitekChipInfo();
  EXPECT_EQ(orb::test::descriptorsOf(files_.identityFile), 0);
}

TEST_F(IdentityFile, IsNotWrittenByConstruction) {
  orbController();
  EXPECT_EQ(contentOf(files_.identityFile), "(no file)");
}

TEST_F(IdentityFile, IsLeftByteForByteWhenItExists) {
  const std::string content = "anything at all\0\xFF, without end of line"s;
  fill(files_.identityFile, content);
  orbController facade;
  facade.saveorbitekChipInfo();
  EXPECT_EQ(contentOf(files_.identityFile), content);
}

TEST_F(IdentityFile, IsLeftEmptyWhenItExistsEmpty) {
  fill(files_.identityFile, "");
  board_.modules.clear();
  orbController().saveorbitekChipInfo();
  EXPECT_EQ(contentOf(files_.identityFile), "");
}

TEST_F(IdentityFile, IsLeftByALaterCallThatKnowsBetter) {
  orbController facade;
  facade.saveorbitekChipInfo();
  gps_.receiver.change([](orb::sim::State& state) { state.identity.revisionYear = 25; });
  facade.saveorbitekChipInfo();
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=OK\n"
            "orbitek_Info=Revision 2024.3.15\n");
}

TEST_F(IdentityFile, IsWrittenAgainAfterItWasDeleted) {
  orbController facade;
  facade.saveorbitekChipInfo();
  std::filesystem::remove(files_.identityFile);
  gps_.receiver.change([](orb::sim::State& state) { state.identity.revisionYear = 25; });
  facade.saveorbitekChipInfo();
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=OK\n"
            "orbitek_Info=Revision 2025.3.15\n");
}

TEST_F(IdentityFile, IsNoErrorWhenItCannotBeMade) {
  files_.makeUnusable("/tmp/orbitekChip-info.txt");
  orbController facade;
  EXPECT_NO_THROW(facade.saveorbitekChipInfo());
  EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
}

// The versions in front of the revision.

TEST_F(IdentityFile, LeavesTheVersionsInTheFacade) {
  orbController facade;
  facade.saveorbitekChipInfo();
  EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
  EXPECT_EQ(facade.odmVersionField(), "ODMVersion 1.2.0");
  EXPECT_EQ(facade.revisionField(), "");
}

TEST_F(IdentityFile, LeavesTheVersionsInTheFacadeAlsoWhenItExists) {
  fill(files_.identityFile, "");
  orbController facade;
  facade.saveorbitekChipInfo();
  EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
  EXPECT_EQ(facade.odmVersionField(), "ODMVersion 1.2.0");
}

TEST_F(IdentityFile, LeavesEarlierVersionsWhenTheReceiverDoesNotAnswerAnyMore) {
  orbController facade;
  facade.saveorbitekChipInfo();
  gps_.script.on(0x0200).nothing();
  letPass(5);
  standardErrorOf([&] { facade.saveorbitekChipInfo(); });
  EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
  EXPECT_EQ(facade.odmVersionField(), "ODMVersion 1.2.0");
}

// checkorbitekCheckId

TEST_F(IdentityFile, IsWrittenWithTheFlagOfConstructionAndTheInfoOfANewDriver) {
  board_.modules.clear();
  orbController facade;
  facade.checkorbitekCheckId();
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=NO\n"
            "orbitek_Info=Revision 2024.3.15\n");
}

TEST_F(IdentityFile, CheckPutsADriverInPlaceOfTheNullController) {
  board_.modules.clear();
  orbController facade;
  facade.checkorbitekCheckId();
  sent();
  EXPECT_EQ(facade.restart(true), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 03 64 3F 01 5A 0D 0A");
  EXPECT_EQ(facade.timeStamp(), "14:03:27_042: ");
}

TEST_F(IdentityFile, CheckKeepsTheFlagAndTheChipInterfaceWithoutBoard) {
  board_.modules.clear();
  orbController facade;
  facade.checkorbitekCheckId();
  EXPECT_FALSE(facade.IsOrbitek());
  board_.calls.clear();
  EXPECT_EQ(facade.setAntennaPower("standby"), 0);
  EXPECT_TRUE(board_.calls.empty());
}

TEST_F(IdentityFile, CheckKeepsTheFlagAndTheChipInterfaceOfTheBoard) {
  orbController facade;
  const auto chip = orb::test::chipOf(facade);
  facade.checkorbitekCheckId();
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(orb::test::chipOf(facade), chip);
  EXPECT_EQ(facade.setAntennaPower("standby"), 1);
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=OK\n"
            "orbitek_Info=Revision 2024.3.15\n");
}

TEST_F(IdentityFile, CheckPutsANewDriverInPlaceOfTheOldOne) {
  orbController facade;
  const std::weak_ptr<ORBControlInterface> before = orb::test::controllerOf(facade);
  facade.checkorbitekCheckId();
  EXPECT_TRUE(before.expired());
}

TEST_F(IdentityFile, CheckNeitherLooksForTheModuleNorResetsTheChip) {
  orbController facade;
  board_.calls.clear();
  sent();
  EXPECT_EQ(orb::test::standardOutputOf([&] { facade.checkorbitekCheckId(); }),
            "nOrbRevision 2024315\n");
  EXPECT_TRUE(board_.calls.empty());
  EXPECT_EQ(sent(), "A0 A1 00 02 02 00 02 0D 0A");
}

// Cutting the receiver's text.

class IdentityText : public orb::test::NoReceiverTest {
 protected:
  /// What is left of a text; its fields are in the facade.
  std::string remainderOf(std::string text) {
    EXPECT_EQ(facade_.parserGnssChipInfo(text), 0u);
    return text;
  }

  std::string fields() {
    return "[" + facade_.kernelVersionField() + "] [" + facade_.odmVersionField() + "] [" +
           facade_.revisionField() + "]";
  }

  orb::test::FakeBoard board_;
  orbController facade_;
};

TEST_F(IdentityText, LeavesTheLastField) {
  EXPECT_EQ(remainderOf("KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15"),
            "Revision 2024.3.15");
  EXPECT_EQ(fields(), "[KernelVersion 1.0.12] [ODMVersion 1.2.0] []");
}

TEST_F(IdentityText, KeepsTheRevisionWhenASeparatorFollowsIt) {
  EXPECT_EQ(remainderOf("KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15: "), "");
  EXPECT_EQ(fields(), "[KernelVersion 1.0.12] [ODMVersion 1.2.0] [Revision 2024.3.15]");
}

TEST_F(IdentityText, SkipsAFieldWhoseKeyDoesNotStandAtItsStart) {
  EXPECT_EQ(remainderOf("XKernelVersion 1: the ODMVersion 2:  Revision 3: rest"), "rest");
  EXPECT_EQ(fields(), "[] [] []");
}

TEST_F(IdentityText, IsNotExaminedWithoutSeparator) {
  EXPECT_EQ(remainderOf("KernelVersion 1.0.12"), "KernelVersion 1.0.12");
  EXPECT_EQ(remainderOf(""), "");
  EXPECT_EQ(fields(), "[] [] []");
}

TEST_F(IdentityText, IsNotCutAtAColonOrABlankAlone) {
  EXPECT_EQ(remainderOf("KernelVersion:1 :2"), "KernelVersion:1 :2");
  EXPECT_EQ(remainderOf("Revision:"), "Revision:");
  EXPECT_EQ(fields(), "[] [] []");
}

TEST_F(IdentityText, MayHaveItsFieldsInAnyOrder) {
  EXPECT_EQ(remainderOf("Revision 1: KernelVersion 2: ODMVersion 3: "), "");
  EXPECT_EQ(fields(), "[KernelVersion 2] [ODMVersion 3] [Revision 1]");
}

TEST_F(IdentityText, NeedsNothingAfterAKey) {
  EXPECT_EQ(remainderOf("KernelVersion: ODMVersions: Revisions 7: "), "");
  EXPECT_EQ(fields(), "[KernelVersion] [ODMVersions] [Revisions 7]");
}

TEST_F(IdentityText, GivesTheLastOfFieldsWithOneKey) {
  EXPECT_EQ(remainderOf("ODMVersion 1: ODMVersion 2: "), "");
  EXPECT_EQ(fields(), "[] [ODMVersion 2] []");
}

TEST_F(IdentityText, MayHaveEmptyFields) {
  EXPECT_EQ(remainderOf(": : KernelVersion 1: : "), "");
  EXPECT_EQ(fields(), "[KernelVersion 1] [] []");
}

TEST_F(IdentityText, ChangesOnlyTheFieldsThatItHas) {
  remainderOf("KernelVersion 1: ODMVersion 2: Revision 3: ");
  remainderOf("ODMVersion 4: KernelVersion 5");
  EXPECT_EQ(fields(), "[KernelVersion 1] [ODMVersion 4] [Revision 3]");
}

}  // namespace
