#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace orb::test {

/// What the platform classes throw where a test wants them to.
struct BoardFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The board that the platform classes of this program speak to, which takes the place of the
/// platform library by defining those classes itself. One at a time; without one the classes throw
/// std::logic_error.
///
///     FakeBoard board;
///     board.modules[1] = {.records = {{"HardwareSetId", "47205318-001"}}, .i2cBus = "i2c-3"};
class FakeBoard {
 public:
  struct Module {
    std::map<std::string, std::string> records;
    std::size_t barCount = 0;
    std::string i2cBus{};
    std::string spiDevice{};
    int recordType = 1;  ///< of the records that there are
  };

  FakeBoard();
  FakeBoard(const FakeBoard&) = delete;
  FakeBoard& operator=(const FakeBoard&) = delete;
  ~FakeBoard();

  std::map<unsigned int, Module> modules;

  /// An I2C slave: registers from 0 on. Reads and writes go on from the register named.
  std::vector<unsigned char> registers{0, 0, 0, 0, 0, 0, 0, 0};
  int i2cOpenResult = 0;
  /// Below 0: reads and writes fail with this result and change nothing.
  int i2cTransferResult = 0;

  /// What the platform classes were asked, such as "record HardwareSetId"; "end of ..." where an
  /// object was destroyed.
  std::vector<std::string> calls;

  /// The call that fails with BoardFailure; empty for none.
  std::string failingCall;

  /// Records a call; throws if it is the failing one.
  void called(const std::string& call);

  /// The module at a location; an empty one where there is none.
  Module module(unsigned int location) const;
};

/// A board whose module is the receiver's carrier.
struct CarrierBoard : FakeBoard {
  CarrierBoard() {
    modules[1].records["HardwareSetId"] = "47205318-001";
    modules[1].i2cBus = "i2c-3";
  }
};

}  // namespace orb::test
