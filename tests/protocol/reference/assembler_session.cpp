#include "reference/assembler_session.h"

#include <algorithm>

#include "reference/catalogue_file.h"

namespace orb::reference {

std::string AssemblerSession::update(unsigned char replyId, const Bytes& buffer) {
  const auto exact = std::make_unique<unsigned char[]>(buffer.size());
  std::copy(buffer.begin(), buffer.end(), exact.get());
  std::string line = std::to_string(builder_.update(replyId, exact.get(), buffer.size()));
  for (const auto count : {builder_.getGoodMessageCount(), builder_.getErroredMessageCount(),
                           builder_.getUnknownMessageCount(), builder_.getAckMessageCount(),
                           builder_.getNakMessageCount()}) {
    line += ' ' + std::to_string(count);
  }
  return line;
}

std::vector<std::unique_ptr<ORBMessage>> AssemblerSession::takeByAge() {
  std::vector<std::unique_ptr<ORBMessage>> taken;
  while (auto* message = list_.getMessage()) {
    taken.emplace_back(message);
  }
  return taken;
}

std::vector<std::unique_ptr<ORBMessage>> AssemblerSession::takeByType() {
  std::vector<std::unique_ptr<ORBMessage>> taken;
  for (const auto& row : catalogueRows()) {
    const auto type = static_cast<ORBMessageMsgValue>(row.id * 256 + row.subId);
    while (auto* message = list_.findFirstOfMessage(type)) {
      taken.emplace_back(message);
    }
  }
  return taken;
}

}  // namespace orb::reference
