#include "interpose/x86_instruction.h"

namespace orb::sim {
namespace {

/// A set of opcodes, written as numbers and ranges in hexadecimal: "63 80-8F".
class Opcodes {
 public:
  consteval explicit Opcodes(const char* text) {
    while (*text != '\0') {
      const unsigned int first = takeNumber(text);
      const unsigned int last = *text == '-' ? takeNumber(++text) : first;
      for (unsigned int i = first; i <= last; ++i) bits_[i / 64] |= 1ULL << i % 64;
      if (*text == ' ') ++text;
    }
  }
  bool have(std::uint8_t opcode) const { return (bits_[opcode / 64] >> opcode % 64 & 1) != 0; }

 private:
  static consteval unsigned int takeDigit(const char*& text) {
    const char digit = *text++;
    return static_cast<unsigned int>(digit <= '9' ? digit - '0' : digit - 'A' + 10);
  }
  static consteval unsigned int takeNumber(const char*& text) {
    const unsigned int high = takeDigit(text);
    return high * 16 + takeDigit(text);
  }

  std::uint64_t bits_[4]{};
};

// Of the one-byte opcodes: those followed by a ModRM byte, by a constant of one byte, and by one of
// an operand's size; and those that do not exist in 64-bit code, or not for programs. The one
// exception is hlt (F4): it stands where a program's start must not return to.
constexpr Opcodes kModrm(
    "00-03 08-0B 10-13 18-1B 20-23 28-2B 30-33 38-3B 63 69 6B 80-8F C0-C1 C6-C7 D0-D3 "
    "D8-DF F6-F7 FE-FF");
constexpr Opcodes kByteConstant(
    "04 0C 14 1C 24 2C 34 3C 6A-6B 70-7F 80 83 A8 B0-B7 C0-C1 C6 CD E0-E7 EB");
constexpr Opcodes kWideConstant("05 0D 15 1D 25 2D 35 3D 68-69 81 A9 B8-BF C7 E8-E9");
constexpr Opcodes kInvalid(
    "06-07 0E 16-17 1E-1F 27 2F 37 3F 60-61 6C-6F 82 9A CA-CB CE-CF D4-D7 E0-E2 E4-E7 EA "
    "EC-EF F1 FA-FB");

// Of the opcodes behind 0F: those without a ModRM byte, those with a constant of one byte, and
// those that do not exist, or not for programs.
constexpr Opcodes kBareAfter0F("05-09 0B 0E 30-37 77 80-8F A0-A2 A8-AA C8-CF");
constexpr Opcodes kByteConstantAfter0F("70-73 A4 AC BA C2 C4-C6");
constexpr Opcodes kInvalidAfter0F(
    "00 02-04 06-0A 0C 0E-0F 20-27 30 32-33 35-37 39 3B-3F 7A-7B A6-A7 AA B2 B4-B5");

constexpr Opcodes kPrefixes("26 2E 36 3E 64-67 F0 F2-F3");

/// As many as assemblers put in front of a no-operation that fills a gap. What decides an
/// instruction's length is then within kLongestInstruction bytes.
constexpr int kMostPrefixes = 7;

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
  for (int count = 0; kPrefixes.have(*next_); ++next_) {
    hasShortOperands_ |= *next_ == 0x66;
    if (++count > kMostPrefixes) {
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
