#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orb-sim/frame.h"
#include "orb-sim/scenario.h"

namespace orb::test {
namespace {

/// All ready scenarios, which together use every part of the format.
std::vector<std::string> readyScenarios() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(ORB_SIM_SCENARIOS)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> texts;
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    texts.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  return texts;
}

/// Damages texts at random, the same way in every run.
class Mutator {
 public:
  std::string mutated(std::string text) {
    for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
      change(text);
    }
    return text;
  }

 private:
  std::size_t below(std::size_t count) { return random_() % count; }

  void change(std::string& text) {
    constexpr std::string_view kPieces[] = {"-1",
                                            "1e999",
                                            "nan",
                                            "inf",
                                            "''",
                                            "[",
                                            "]]",
                                            "{",
                                            "}",
                                            "=",
                                            "\"",
                                            "\\",
                                            "\n",
                                            "#",
                                            "0x",
                                            "99999999999999999999",
                                            "[[fault]]\n",
                                            "[line]\n",
                                            "true",
                                            "2024-02-30",
                                            "'1ms'",
                                            "\xFF",
                                            std::string_view("\0", 1),
                                            "message = 0xFFFF\n",
                                            "'0.0000001ns'",
                                            "1979-05-27"};
    const std::size_t place = below(text.size() + 1);
    const std::size_t length = std::min<std::size_t>(below(20), text.size() - place);
    switch (below(4)) {
      case 0:
        text.erase(place, length);
        break;
      case 1:
        text.insert(place, kPieces[below(std::size(kPieces))]);
        break;
      case 2:
        text.insert(below(text.size() + 1), text.substr(place, length));
        break;
      default:
        if (place < text.size()) {
          text[place] = static_cast<char>(below(256));
        }
        break;
    }
  }

  std::mt19937 random_{20261121};
};

// A receiver can be put in the circumstances of whatever the loader lets pass.
TEST(ScenarioMutation, IsRefusedWithAProblemOrMakesADevice) {
  constexpr int kMutations = 4000;
  const std::vector<std::string> texts = readyScenarios();
  ASSERT_FALSE(texts.empty());
  Mutator mutator;
  int accepted = 0;
  int refused = 0;
  for (int i = 0; i < kMutations; ++i) {
    const std::string text = mutator.mutated(texts[static_cast<std::size_t>(i) % texts.size()]);
    try {
      sim::ScenarioDevice device(sim::parseScenario(text, "f"));
      device.receive(sim::frame(0x1000));
      device.tick(std::chrono::milliseconds(100));
      ++accepted;
    } catch (const std::runtime_error& error) {
      ASSERT_EQ(std::string_view(error.what()).substr(0, 2), "f:") << text;
      ++refused;
    }
  }
  EXPECT_GT(accepted, kMutations / 20) << "too few to say anything";
  EXPECT_GT(refused, kMutations / 20) << "too few to say anything";
}

}  // namespace
}  // namespace orb::test
