#include "reference/assembler_model.h"

#include <algorithm>

#include "reference/catalogue_file.h"

namespace orb::test {
namespace {

constexpr unsigned short kAcknowledged = 0x8300;
constexpr unsigned short kRefused = 0x8400;
constexpr unsigned char kEndMarker = 0xFF;

/// The row of a message; that of the end marker where there is none. Lengths play no part.
std::size_t rowOf(unsigned char id, unsigned char subId) {
  const auto& rows = catalogueRows();
  std::size_t row = 0;
  while (rows[row].id != kEndMarker && (rows[row].id != id || rows[row].subId != subId)) {
    ++row;
  }
  return row;
}

}  // namespace

unsigned long Scan::scan(const Bytes& buffer) {
  const std::size_t size = buffer.size();
  const std::size_t endMarker = catalogueRows().size() - 1;
  std::size_t handled = 0;
  std::size_t i = 0;
  while (i < size) {
    if (i + 2 >= size) {
      return i + 2 == size ? handled : 0;
    }
    if (buffer[i] != 0xA0) {
      i += 1;
      continue;
    }
    if (buffer[i + 1] != 0xA1) {
      i += 2;
      continue;
    }
    if (i + 6 >= size) {
      return handled;
    }
    const unsigned char id = buffer[i + 4];
    const unsigned char subId = hasSubId(id) ? buffer[i + 5] : 0;
    const std::size_t row = rowOf(id, subId);
    if (row == endMarker) {
      ++unknown;
      i += 2;
      continue;
    }
    if (row == endMarker - 1) {
      ++unknown;  // the last message counts here too, whatever becomes of its packet
    }
    const std::size_t length = buffer[i + 2] * 256U + buffer[i + 3];
    if (i + 5 + length >= size) {
      return handled;
    }
    unsigned char checksum = 0;
    for (std::size_t k = 0; k < length; ++k) {
      checksum ^= buffer[i + 4 + k];
    }
    if (checksum == buffer[i + 4 + length]) {
      Bytes packet;
      for (std::size_t k = 0; k < 5 + length; ++k) {
        packet.push_back(buffer[i + k]);
      }
      packet.push_back(0x0D);
      packet.push_back(0x0A);
      messages.push_back({static_cast<unsigned short>(id * 256 + subId), packet});
      ++good;
      handled = i + (hasSubId(id) ? 7 : 6) + length;
    } else {
      ++errored;
      handled = i + 5 + length;
    }
    i = handled;
  }
  return 0;
}

std::string AssemblerModel::update(const Bytes& buffer) {
  const Scan scan(buffer);
  good_ += scan.good;
  errored_ += scan.errored;
  unknown_ += scan.unknown;
  for (const FoundMessage& message : scan.messages) {
    acknowledged_ += message.type == kAcknowledged ? 1 : 0;
    refused_ += message.type == kRefused ? 1 : 0;
    list_.push_back(message);
  }
  return joined({scan.position, good_, errored_, unknown_, acknowledged_, refused_});
}

void AssemblerModel::resetCounters() { good_ = errored_ = unknown_ = acknowledged_ = refused_ = 0; }

std::string AssemblerModel::takeOldest() { return take(list_.begin()); }

std::string AssemblerModel::takeNewestOf(unsigned short type) {
  auto message = list_.end();
  for (auto each = list_.begin(); each != list_.end(); ++each) {
    message = each->type == type ? each : message;
  }
  return take(message);
}

unsigned short AssemblerModel::someType() const {
  return isEmpty() ? kAcknowledged : list_[list_.size() / 2].type;
}

std::string AssemblerModel::take(std::deque<FoundMessage>::iterator message) {
  if (message == list_.end()) {
    return "";
  }
  const FoundMessage taken = *message;
  list_.erase(message);
  return messageText(taken.type, taken.packet.size() - 7, taken.packet);
}

std::string joined(std::initializer_list<unsigned long> numbers) {
  std::string text;
  for (const unsigned long number : numbers) {
    text += (text.empty() ? "" : " ") + std::to_string(number);
  }
  return text;
}

std::string messageText(unsigned short type, unsigned long payloadLength, const Bytes& packet) {
  const Bytes bytes{static_cast<unsigned char>(type >> 8), static_cast<unsigned char>(type)};
  return hexText(bytes, "") + ':' + std::to_string(payloadLength) + ':' + hexText(packet, "");
}

}  // namespace orb::test
