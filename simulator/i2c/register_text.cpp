#include "i2c/register_text.h"

#include <algorithm>

namespace orb::sim {
namespace {

// The values end at these columns of lines that are all equally long.
constexpr std::size_t kLineLength = 40;
constexpr std::size_t kColumns[] = {30, 39};

constexpr std::string_view kForm =
    "port expander at 0x21   port 0   port 1\n"
    "0 1  input                  --       --\n"
    "2 3  output                 --       --\n"
    "4 5  polarity               --       --\n"
    "6 7  direction              --       --\n"
    "next register                         -\n"
    "antenna supply               ----------\n";
static_assert(kForm.size() == RegisterText::kSize);

constexpr std::size_t kSelectedAt = 5 * kLineLength + kColumns[1] - 1;
constexpr std::size_t kSupplyAt = 6 * kLineLength + kColumns[1];  // its end

constexpr char kDigits[] = "0123456789abcdef";

/// Where the two digits of a register are.
constexpr std::size_t placeOf(unsigned int number) {
  return (1 + number / 2) * kLineLength + kColumns[number % 2] - 2;
}

std::string_view supplyOf(const PortExpander& expander) {
  constexpr unsigned int kPort = 1;
  constexpr unsigned int kPin = PortExpander::kAntennaSupplyPin;
  if ((expander.get(PortExpander::kDirection + kPort) & kPin) != 0) return "not driven";
  return (expander.get(PortExpander::kOutput + kPort) & kPin) != 0 ? "        on" : "       off";
}

/// The value of a hexadecimal digit; beyond 15 where the character is none.
unsigned int digit(char character) {
  return static_cast<unsigned int>(std::find(kDigits, kDigits + 16, character) - kDigits);
}

}  // namespace

RegisterText::RegisterText(const PortExpander& expander) noexcept {
  std::copy(kForm.begin(), kForm.end(), text_);
  for (unsigned int number = 0; number < PortExpander::kRegisterCount; ++number) {
    const unsigned int value = expander.get(number);
    text_[placeOf(number)] = kDigits[value / 16];
    text_[placeOf(number) + 1] = kDigits[value % 16];
  }
  text_[kSelectedAt] = kDigits[expander.selected()];
  const std::string_view supply = supplyOf(expander);
  std::copy(supply.begin(), supply.end(), text_ + kSupplyAt - supply.size());
}

bool RegisterText::read(std::string_view text, PortExpander& expander) noexcept {
  if (text.size() != kSize) return false;
  PortExpander found;
  for (unsigned int number = 0; number < PortExpander::kRegisterCount; ++number) {
    const unsigned int high = digit(text[placeOf(number)]);
    const unsigned int low = digit(text[placeOf(number) + 1]);
    if (high > 15 || low > 15) return false;
    found.set(number, static_cast<std::uint8_t>(high * 16 + low));
  }
  const unsigned int selected = digit(text[kSelectedAt]);
  if (selected >= PortExpander::kRegisterCount) return false;
  found.select(static_cast<std::uint8_t>(selected));
  expander = found;
  return true;
}

}  // namespace orb::sim
