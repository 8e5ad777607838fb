#include "controller/command.h"

#include <utility>

namespace orb {

Command&& Command::u8(unsigned int value) && {
  message_.setByte(next_++, static_cast<unsigned char>(value));
  return std::move(*this);
}

Command&& Command::u16(unsigned int value) && { return std::move(*this).u8(value >> 8).u8(value); }

}  // namespace orb
