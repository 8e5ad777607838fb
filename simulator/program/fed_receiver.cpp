#include "program/fed_receiver.h"

#include <unistd.h>

#include <array>

#include "i2c/register_text.h"

namespace orb::sim {

Bytes FedReceiver::receive(const Bytes& bytes) {
  feedAntenna();
  return receiver_.receive(bytes);
}

Bytes FedReceiver::tick(std::chrono::milliseconds elapsed) {
  feedAntenna();
  return receiver_.tick(elapsed);
}

void FedReceiver::feedAntenna() {
  std::array<char, RegisterText::kSize + 1> text{};
  PortExpander expander;
  if (::pread(registers_.get(), text.data(), RegisterText::kSize, 0) > 0 &&
      RegisterText::read(text.data(), expander)) {
    receiver_.supplyAntenna(expander.feedsAntenna());
  }
}

}  // namespace orb::sim
