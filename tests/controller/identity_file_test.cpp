#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "facade_parts.h"
#include "orb-gnss/controller.h"
#include "support/fake_board.h"
#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

/// A device with the carrier module and a receiver that answers.
class IdentityFile : public ReceiverTest {
 protected:
  void expectFile(const std::string& chip, const std::string& info) {
    EXPECT_EQ(contentOf(files_.identityFile),
              "orbitek_Chip=" + chip + "\norbitek_Info=" + info + "\n");
  }

  CarrierBoard board_;
};

TEST_F(IdentityFile, TellsTheRevisionOfTheReceiver) {
  orbController facade;
  EXPECT_EQ(contentOf(files_.identityFile), "(no file)");
  facade.saveorbitekChipInfo();
  expectFile("OK", "Revision 2024.3.15");
  EXPECT_EQ(descriptorsOf(files_.identityFile), 0);
  EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
  EXPECT_EQ(facade.odmVersionField(), "ODMVersion 1.2.0");
  EXPECT_EQ(facade.revisionField(), "");
}

TEST_F(IdentityFile, TellsThatThereIsNoReceiver) {
  board_.modules.clear();
  orbController facade;
  facade.saveorbitekChipInfo();
  expectFile("NO", "");
}

TEST_F(IdentityFile, HasNoInfoWhenTheReceiverDoesNotAnswerAnyMore) {
  orbController facade;
  gps_.script.on(0x0200).nothing();
  letPass(5);
  standardErrorOf([&] { facade.saveorbitekChipInfo(); });
  expectFile("OK", "");
}

TEST_F(IdentityFile, HasTheRightsThatTheUmaskLeaves) {
  const mode_t usual = ::umask(S_IWOTH);
  orbController facade;
  facade.saveorbitekChipInfo();
  ::umask(usual);
  EXPECT_EQ(std::filesystem::status(files_.identityFile).permissions(),
            std::filesystem::perms{0664});
}

TEST_F(IdentityFile, IsLeftByteForByteWhenItExists) {
  using std::string_literals::operator""s;
  for (const std::string& content : {"anything at all\0\xFF, without end of line"s, ""s}) {
    fill(files_.identityFile, content);
    orbController facade;
    facade.saveorbitekChipInfo();
    EXPECT_EQ(contentOf(files_.identityFile), content);
    EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
    EXPECT_EQ(facade.odmVersionField(), "ODMVersion 1.2.0");
  }
}

TEST_F(IdentityFile, IsNotWrittenThroughALinkNorIntoAFifo) {
  const std::filesystem::path elsewhere = files_.folder / "elsewhere";
  orbController facade;
  std::filesystem::create_symlink(elsewhere, files_.identityFile);
  facade.saveorbitekChipInfo();
  EXPECT_EQ(contentOf(elsewhere), "(no file)");
  EXPECT_EQ(std::filesystem::read_symlink(files_.identityFile), elsewhere);
  std::filesystem::remove(files_.identityFile);
  ASSERT_EQ(::mkfifo(files_.identityFile.c_str(), S_IRWXU), 0);
  facade.saveorbitekChipInfo();
  EXPECT_TRUE(std::filesystem::is_fifo(files_.identityFile));
}

TEST_F(IdentityFile, IsWrittenAgainOnlyAfterItWasDeleted) {
  orbController facade;
  facade.saveorbitekChipInfo();
  gps_.receiver.change([](sim::State& state) { state.identity.revisionYear = 25; });
  facade.saveorbitekChipInfo();
  expectFile("OK", "Revision 2024.3.15");
  std::filesystem::remove(files_.identityFile);
  facade.saveorbitekChipInfo();
  expectFile("OK", "Revision 2025.3.15");
}

TEST_F(IdentityFile, IsNoErrorWhenItCannotBeMade) {
  files_.makeUnusable("/tmp/orbitekChip-info.txt");
  orbController facade;
  EXPECT_NO_THROW(facade.saveorbitekChipInfo());
  EXPECT_EQ(facade.kernelVersionField(), "KernelVersion 1.0.12");
}

TEST_F(IdentityFile, IsNotLeftEmptyWhenItCannotBeWritten) {
  board_.modules.clear();
  orbController facade;
  std::filesystem::permissions(files_.folder, std::filesystem::perms::all);
  const mode_t maskBefore = ::umask(0777);
  const uid_t user = ::geteuid();
  constexpr uid_t kNobody = 65534;
  [[maybe_unused]] const int ignored = ::seteuid(kNobody);  // only root can, who may write all
  facade.saveorbitekChipInfo();
  EXPECT_EQ(::seteuid(user), 0);
  ::umask(maskBefore);
  EXPECT_EQ(contentOf(files_.identityFile), "(no file)");
  facade.saveorbitekChipInfo();
  expectFile("NO", "");
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

TEST_F(IdentityFile, CheckPutsADriverInPlaceOfTheNullControllerAlone) {
  board_.modules.clear();
  orbController facade;
  facade.checkorbitekCheckId();
  expectFile("NO", "Revision 2024.3.15");
  sent();
  EXPECT_EQ(facade.restart(true), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 03 64 3F 01 5A 0D 0A");
  EXPECT_EQ(facade.timeStamp(), "14:03:27_042: ");
  EXPECT_FALSE(facade.IsOrbitek());
  board_.calls.clear();
  EXPECT_EQ(facade.setAntennaPower("standby"), 0);
  EXPECT_TRUE(board_.calls.empty());
}

TEST_F(IdentityFile, CheckKeepsTheFlagAndTheChipInterfaceOfTheBoard) {
  orbController facade;
  const auto chip = chipOf(facade);
  const std::weak_ptr<ORBControlInterface> before = controllerOf(facade);
  facade.checkorbitekCheckId();
  EXPECT_TRUE(before.expired());
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(chipOf(facade), chip);
  EXPECT_EQ(facade.setAntennaPower("standby"), 1);
  expectFile("OK", "Revision 2024.3.15");
}

TEST_F(IdentityFile, CheckNeitherLooksForTheModuleNorResetsTheChip) {
  orbController facade;
  board_.calls.clear();
  sent();
  EXPECT_EQ(standardOutputOf([&] { facade.checkorbitekCheckId(); }), "nOrbRevision 2024315\n");
  EXPECT_TRUE(board_.calls.empty());
  EXPECT_EQ(sent(), "A0 A1 00 02 02 00 02 0D 0A");
}

// Cutting the receiver's text.

class IdentityText : public NoReceiverTest {
 protected:
  /// Expects what is left of a text, and which fields, separated by /, are then in the facade.
  static void expectCut(orbController& facade, std::string text, const std::string& remainder,
                        const std::string& fields) {
    const std::string whole = text;
    EXPECT_EQ(facade.parserGnssChipInfo(text), 0u);
    EXPECT_EQ(text, remainder) << whole;
    EXPECT_EQ(
        facade.kernelVersionField() + "/" + facade.odmVersionField() + "/" + facade.revisionField(),
        fields)
        << whole;
  }

  FakeBoard board_;
};

TEST_F(IdentityText, IsCutIntoItsFields) {
  // A text, what is left of it, and the fields that a new facade then has.
  const struct {
    const char* text;
    const char* remainder;
    const char* fields;
  } rows[] = {
      {"KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15", "Revision 2024.3.15",
       "KernelVersion 1.0.12/ODMVersion 1.2.0/"},
      // A separator follows the revision.
      {"KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15: ", "",
       "KernelVersion 1.0.12/ODMVersion 1.2.0/Revision 2024.3.15"},
      // The keys do not stand at the start of a field.
      {"XKernelVersion 1: the ODMVersion 2:  Revision 3: rest", "rest", "//"},
      // No separator, or a part of one.
      {"KernelVersion 1.0.12", "KernelVersion 1.0.12", "//"},
      {"", "", "//"},
      {"KernelVersion:1 :2", "KernelVersion:1 :2", "//"},
      {"Revision:", "Revision:", "//"},
      // In any order, repeated, empty, or with more letters after a key.
      {"Revision 1: KernelVersion 2: ODMVersion 3: ", "",
       "KernelVersion 2/ODMVersion 3/Revision 1"},
      {"ODMVersion 1: ODMVersion 2: ", "", "/ODMVersion 2/"},
      {": : KernelVersion 1: : ", "", "KernelVersion 1//"},
      {"KernelVersion: ODMVersions: Revisions 7: ", "", "KernelVersion/ODMVersions/Revisions 7"},
  };
  for (const auto& [text, remainder, fields] : rows) {
    orbController facade;
    expectCut(facade, text, remainder, fields);
  }
}

TEST_F(IdentityText, ChangesOnlyTheFieldsThatItHas) {
  orbController facade;
  expectCut(facade, "KernelVersion 1: ODMVersion 2: Revision 3: ", "",
            "KernelVersion 1/ODMVersion 2/Revision 3");
  expectCut(facade, "ODMVersion 4: KernelVersion 5", "KernelVersion 5",
            "KernelVersion 1/ODMVersion 4/Revision 3");
}

}  // namespace
}  // namespace orb::test
