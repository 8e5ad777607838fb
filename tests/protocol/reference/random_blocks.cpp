#include "reference/random_blocks.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "reference/assembler_session.h"
#include "reference/buffer_generator.h"

namespace orb::reference {
namespace {

constexpr unsigned kBuffersPerBlock = 1000;

class Fnv1a {
 public:
  void add(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001B3; }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325;
};

std::string messageLine(const ORBMessage& message) {
  return hexText(message.getMsgSidId()) + ' ' + std::to_string(message.getPayloadLength()) + ' ' +
         hexText(message.getPacketData(), message.getPacketLength());
}

struct ClosePipe {
  void operator()(FILE* pipe) const { pclose(pipe); }
};

/// What `generate.py --show` prints.
std::string modelTranscript(unsigned block) {
  const std::string command =
      ORB_PYTHON " -B " ORB_REFERENCE_FOLDER "/generate.py --show " + std::to_string(block);
  const std::unique_ptr<FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
  std::string text;
  char chunk[4096];
  for (std::size_t count = 1; pipe && count > 0;) {
    count = std::fread(chunk, 1, sizeof chunk, pipe.get());
    text.append(chunk, count);
  }
  return text;
}

/// The same text for one buffer of the library's block.
std::string transcriptOf(const std::string& number, const PlayedBuffer& played) {
  std::string text = number + ' ' + hexText(played.buffer.data(), played.buffer.size()) + '\n';
  for (const auto& line : played.lines) {
    text += "  " + line + '\n';
  }
  return text;
}

}  // namespace

std::vector<BlockDigest> checkedInDigests() {
  std::vector<BlockDigest> digests;
  for (const auto& line : dataLines("block_digests.tsv")) {
    const auto fields = split(line, '\t');
    if (fields.size() != 4 || numberIn(fields[0], 10) != digests.size()) {
      throw std::runtime_error("block_digests.tsv: not the block expected: " + line);
    }
    digests.push_back({numberIn(fields[1], 16), numberIn(fields[2], 16), numberIn(fields[3], 10)});
  }
  return digests;
}

std::vector<PlayedBuffer> playBlock(unsigned block) {
  BufferGenerator generator(BufferGenerator::kSeed + block);
  auto& random = generator.random();
  std::optional<AssemblerSession> session(std::in_place);
  std::vector<PlayedBuffer> played;
  for (unsigned number = 0; number < kBuffersPerBlock; ++number) {
    Bytes buffer = generator.nextBuffer();
    const auto replyId = static_cast<unsigned char>(random.below(256));
    std::vector<std::string> lines{session->update(replyId, buffer)};
    const auto fate = random.below(8);
    if (fate < 6 || number == kBuffersPerBlock - 1) {
      for (const auto& message : fate % 2 == 0 ? session->takeByAge() : session->takeByType()) {
        lines.push_back(messageLine(*message));
      }
      session.emplace();
    } else if (fate == 7) {
      session->resetCounters();
    }
    played.push_back({std::move(buffer), std::move(lines)});
  }
  return played;
}

BlockDigest digestOf(const std::vector<PlayedBuffer>& played) {
  Fnv1a buffers;
  Fnv1a results;
  unsigned long messages = 0;
  for (const auto& [buffer, lines] : played) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      buffers.add(static_cast<unsigned char>((buffer.size() >> shift) & 0xFF));
    }
    for (const auto byte : buffer) {
      buffers.add(byte);
    }
    for (const auto& line : lines) {
      for (const auto character : line + '\n') {
        results.add(static_cast<unsigned char>(character));
      }
    }
    messages += lines.size() - 1;
  }
  return {buffers.value(), results.value(), messages};
}

std::string firstDifference(unsigned block, const std::vector<PlayedBuffer>& played) {
  const std::string model = modelTranscript(block);
  std::size_t place = 0;
  for (std::size_t number = 0; number < played.size(); ++number) {
    const auto title = std::to_string(block) + '.' + std::to_string(number);
    const auto following = std::to_string(block) + '.' + std::to_string(number + 1) + ' ';
    const auto end = std::min(model.find('\n' + following, place), model.size() - 1) + 1;
    const auto library = transcriptOf(title, played[number]);
    if (model.compare(place, end - place, library) != 0) {
      return "the library says\n" + library + "the model says\n" + model.substr(place, end - place);
    }
    place = end;
  }
  return "none: block_digests.tsv is not from this model";
}

}  // namespace orb::reference
