#include "program/fed_receiver.h"

#include <fstream>
#include <iterator>
#include <string>

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
  std::ifstream file(registers_);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  PortExpander expander;
  if (RegisterText::read(text.c_str(), expander)) {
    receiver_.supplyAntenna(expander.feedsAntenna());
  }
}

}  // namespace orb::sim
