#include "interpose/x86_instruction.h"

namespace orb::sim {
namespace {

/// A set of opcodes, from ranges of them.
class Opcodes {
 public:
  struct Range {
    std::uint8_t first;
    std::uint8_t last;
  };
  template <std::size_t kCount>
  constexpr explicit Opcodes(const Range (&ranges)[kCount]) {
    for (const Range& range : ranges) {
      for (unsigned i = range.first; i <= range.last; ++i) bits_[i / 64] |= 1ull << i % 64;
    }
  }
  constexpr bool have(std::uint8_t opcode) const {
    return (bits_[opcode / 64] >> opcode % 64 & 1) != 0;
  }

 private:
  std::uint64_t bits_[4]{};
};

// Of the one-byte opcodes: those followed by a ModRM byte, by constants of one byte and of an
// operand's size, and those that do not exist in 64-bit code or are
// not for programs; hlt, which stands where a program's start must not return to, is left in.
constexpr Opcodes kModrm({{0x00, 0x03},
                          {0x08, 0x0B},
                          {0x10, 0x13},
                          {0x18, 0x1B},
                          {0x20, 0x23},
                          {0x28, 0x2B},
                          {0x30, 0x33},
                          {0x38, 0x3B},
                          {0x63, 0x63},
                          {0x69, 0x69},
                          {0x6B, 0x6B},
                          {0x80, 0x8F},
                          {0xC0, 0xC1},
                          {0xC6, 0xC7},
                          {0xD0, 0xD3},
                          {0xD8, 0xDF},
                          {0xF6, 0xF7},
                          {0xFE, 0xFF}});
constexpr Opcodes kByteConstant({{0x04, 0x04},
                                 {0x0C, 0x0C},
                                 {0x14, 0x14},
                                 {0x1C, 0x1C},
                                 {0x24, 0x24},
                                 {0x2C, 0x2C},
                                 {0x34, 0x34},
                                 {0x3C, 0x3C},
                                 {0x6A, 0x6B},
                                 {0x70, 0x7F},
                                 {0x80, 0x80},
                                 {0x83, 0x83},
                                 {0xA8, 0xA8},
                                 {0xB0, 0xB7},
                                 {0xC0, 0xC1},
                                 {0xC6, 0xC6},
                                 {0xCD, 0xCD},
                                 {0xE0, 0xE7},
                                 {0xEB, 0xEB}});
constexpr Opcodes kWideConstant({{0x05, 0x05},
                                 {0x0D, 0x0D},
                                 {0x15, 0x15},
                                 {0x1D, 0x1D},
                                 {0x25, 0x25},
                                 {0x2D, 0x2D},
                                 {0x35, 0x35},
                                 {0x3D, 0x3D},
                                 {0x68, 0x69},
                                 {0x81, 0x81},
                                 {0xA9, 0xA9},
                                 {0xB8, 0xBF},
                                 {0xC7, 0xC7},
                                 {0xE8, 0xE9}});
constexpr Opcodes kInvalid({{0x06, 0x07}, {0x0E, 0x0E}, {0x16, 0x17}, {0x1E, 0x1F}, {0x27, 0x27},
                            {0x2F, 0x2F}, {0x37, 0x37}, {0x3F, 0x3F}, {0x60, 0x61}, {0x6C, 0x6F},
                            {0x82, 0x82}, {0x9A, 0x9A}, {0xCA, 0xCB}, {0xCE, 0xCF}, {0xD4, 0xD7},
                            {0xE0, 0xE2}, {0xE4, 0xE7}, {0xEA, 0xEA}, {0xEC, 0xEF}, {0xF1, 0xF1},
                            {0xFA, 0xFB}});

// Of the opcodes behind 0F: those without a ModRM byte, those with a constant of one byte, and
// those that do not exist.
constexpr Opcodes kBareAfter0F({{0x05, 0x09},
                                {0x0B, 0x0B},
                                {0x0E, 0x0E},
                                {0x30, 0x37},
                                {0x77, 0x77},
                                {0x80, 0x8F},
                                {0xA0, 0xA2},
                                {0xA8, 0xAA},
                                {0xC8, 0xCF}});
constexpr Opcodes kByteConstantAfter0F(
    {{0x70, 0x73}, {0xA4, 0xA4}, {0xAC, 0xAC}, {0xBA, 0xBA}, {0xC2, 0xC2}, {0xC4, 0xC6}});

constexpr Opcodes kInvalidAfter0F({{0x00, 0x00},
                                   {0x02, 0x04},
                                   {0x06, 0x0A},
                                   {0x0C, 0x0C},
                                   {0x0E, 0x0F},
                                   {0x20, 0x27},
                                   {0x30, 0x30},
                                   {0x32, 0x33},
                                   {0x35, 0x37},
                                   {0x39, 0x39},
                                   {0x3B, 0x3F},
                                   {0x7A, 0x7B},
                                   {0xA6, 0xA7},
                                   {0xAA, 0xAA},
                                   {0xB2, 0xB2},
                                   {0xB4, 0xB5}});

constexpr Opcodes kPrefixes({{0x26, 0x26},
                             {0x2E, 0x2E},
                             {0x36, 0x36},
                             {0x3E, 0x3E},
                             {0x64, 0x67},
                             {0xF0, 0xF0},
                             {0xF2, 0xF3}});

/// Finds the length of the instruction at `code`, of which kLongestInstruction bytes can be read.
class Instruction {
 public:
  explicit Instruction(const std::uint8_t* code) noexcept : start_(code), next_(code) { decode(); }

  /// 0 where there is no instruction.
  std::size_t length() const noexcept {
    return isValid_ ? static_cast<std::size_t>(next_ - start_) : 0;
  }

 private:
  void decode() noexcept;
  void decodeOneByteOpcode(std::uint8_t opcode) noexcept;
  void decodeAfter0F() noexcept;
  void decodeVector(std::size_t prefixLength, unsigned int map) noexcept;
  void skipOperand() noexcept;

  const std::uint8_t* const start_;
  const std::uint8_t* next_;
  bool hasShortOperands_ = false;
  bool hasLongOperands_ = false;
  bool isValid_ = true;
};

void Instruction::decode() noexcept {
  while (kPrefixes.have(*next_)) {
    hasShortOperands_ |= *next_ == 0x66;
    if (++next_ - start_ >= static_cast<std::ptrdiff_t>(kLongestInstruction)) {
      isValid_ = false;
      return;
    }
  }
  if ((*next_ & 0xF0) == 0x40) hasLongOperands_ = (*next_++ & 0x08) != 0;
  const std::uint8_t opcode = *next_++;
  if (opcode == 0x0F) {
    decodeAfter0F();
  } else if (opcode == 0xC5) {
    decodeVector(1, 1);
  } else if (opcode == 0xC4) {
    decodeVector(2, *next_ & 0x1F);
  } else if (opcode == 0x62) {
    decodeVector(3, *next_ & 0x07);
  } else {
    decodeOneByteOpcode(opcode);
  }
}

void Instruction::decodeOneByteOpcode(std::uint8_t opcode) noexcept {
  isValid_ = !kInvalid.have(opcode);
  // Two groups have a constant in their first two members only, as the ModRM byte tells.
  const bool isTest = (opcode == 0xF6 || opcode == 0xF7) && (*next_ & 0x30) == 0;
  if (kModrm.have(opcode)) skipOperand();
  const std::size_t wide = hasShortOperands_ ? 2 : 4;
  if (kByteConstant.have(opcode) || (isTest && opcode == 0xF6)) next_ += 1;
  if (kWideConstant.have(opcode) || (isTest && opcode == 0xF7)) {
    next_ += hasLongOperands_ && (opcode & 0xF8) == 0xB8 ? 8 : wide;
  }
  if (opcode == 0xC2 || opcode == 0xCA) next_ += 2;
  if (opcode == 0xC8) next_ += 3;
  if (opcode >= 0xA0 && opcode <= 0xA3) next_ += 8;
}

void Instruction::decodeAfter0F() noexcept {
  const std::uint8_t opcode = *next_++;
  isValid_ = !kInvalidAfter0F.have(opcode);
  if (opcode == 0x38 || opcode == 0x3A) {
    ++next_;
    skipOperand();
    if (opcode == 0x3A) ++next_;
    return;
  }
  if (!kBareAfter0F.have(opcode)) skipOperand();
  if (kByteConstantAfter0F.have(opcode)) ++next_;
  if (opcode >= 0x80 && opcode <= 0x8F) next_ += 4;
}

/// VEX and EVEX: the rest of the prefix, and an opcode of one of the maps behind 0F.
void Instruction::decodeVector(std::size_t prefixLength, unsigned int map) noexcept {
  next_ += prefixLength;
  const std::uint8_t opcode = *next_++;
  isValid_ = map >= 1 && map <= 6;
  if (map != 1 || opcode != 0x77) skipOperand();
  if (map == 3 || (map == 1 && kByteConstantAfter0F.have(opcode))) ++next_;
}

/// The ModRM byte, and the scale and the displacement that it asks for.
void Instruction::skipOperand() noexcept {
  const std::uint8_t modrm = *next_++;
  const unsigned int mode = modrm >> 6;
  const unsigned int base = modrm & 0x07;
  if (mode == 3) return;
  const bool hasScale = base == 4;
  const bool hasWideDisplacement =
      mode == 2 || (mode == 0 && (hasScale ? *next_ & 0x07 : base) == 5);
  next_ += (hasScale ? 1 : 0) + (hasWideDisplacement ? 4 : 0) + (mode == 1 ? 1 : 0);
}

}  // namespace

std::size_t instructionLength(const std::uint8_t* code) noexcept {
  return Instruction(code).length();
}

}  // namespace orb::sim
