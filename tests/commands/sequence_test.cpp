#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

/// Operations in random order, on a receiver that keeps its settings: here, a plain structure.
class Sequence : public OperationTest, public testing::WithParamInterface<unsigned int> {
 protected:
  Sequence() { connectReceiver(); }

  void carryOut(const Operation& operation) {
    const Drawn drawn = operation.draw(numbers_);
    const Observed observed = observe(drawn.call);
    EXPECT_EQ(observed.result, drawn.result) << operation.name;
    EXPECT_EQ(observed.errorLog, "") << operation.name;
    EXPECT_TRUE(isTrue(operation, observed.outputs, state_))
        << operation.name << ": " << observed.outputs;
    if (drawn.effect) {
      drawn.effect(state_);
    }
  }

  void readEverything() {
    for (const Operation& operation : operations()) {
      if (operation.outputs) {
        carryOut(operation);
      }
    }
    EXPECT_EQ(settingsOf(gps_.receiver.state()), settingsOf(state_));
  }

  const Operation& anyOperation() {
    return operations()[numbers_.between<std::size_t>(0,
                                                      static_cast<int>(operations().size()) - 1)];
  }

  Numbers numbers_{GetParam()};
  sim::State state_ = gps_.receiver.state();
};

TEST_P(Sequence, IsReadAsItWasSet) {
  readEverything();
  for (int round = 0; round < 15; ++round) {
    for (int i = 0; i < 5; ++i) {
      carryOut(anyOperation());
    }
    readEverything();
    ASSERT_FALSE(HasFailure()) << "in round " << round;
  }
}

INSTANTIATE_TEST_SUITE_P(Random, Sequence, testing::Range(0U, 16U));

}  // namespace
}  // namespace orb::test
