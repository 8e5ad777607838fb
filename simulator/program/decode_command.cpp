#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "base/owned_descriptor.h"
#include "orb-sim/trace.h"
#include "program/command_line.h"
#include "program/failure.h"
#include "program/listing_options.h"
#include "program/standard_streams.h"
#include "trace/description.h"
#include "trace/listing.h"
#include "trace/stream_decoder.h"
#include "trace/transcript.h"

namespace orb::sim {
namespace {

constexpr char kDecodeDescription[] =
    "Prints captured bytes as messages, and how many were good, bad and unknown\n\n"
    "Takes any bytes, and traces of orb-sim tap. Without FILE, or with -, reads standard input\n"
    "and prints what comes as it comes. On a terminal, unless NO_COLOR is set, what is damaged is\n"
    "red, what a client says cyan, and what is no message faint.";

/// A file, or standard input.
class Input {
 public:
  explicit Input(const std::filesystem::path& file) {
    if (!file.empty() && file != "-") {
      name_ = file;
      opened_ = {open(file.c_str(), O_RDONLY | O_CLOEXEC), name_};
    }
  }

  const std::string& name() const { return name_; }

  /// What comes next, as soon as something comes; empty at the end.
  std::string_view read() {
    for (;;) {
      const int descriptor = opened_.isOpen() ? opened_.get() : STDIN_FILENO;
      const ssize_t count = ::read(descriptor, block_.data(), block_.size());
      if (count >= 0) {
        return {block_.data(), static_cast<std::size_t>(count)};
      }
      if (errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), name_);
      }
    }
  }

 private:
  std::string name_ = "standard input";
  OwnedDescriptor opened_;
  std::array<char, 65536> block_;
};

/// Calls `take` with `start` and what follows it. Where the input pauses, all that has come is
/// shown.
template <typename Take>
void passAll(std::string_view start, Input& input, Take take) {
  for (std::string_view text = start; !text.empty(); text = input.read()) {
    take(text);
    requireOutput();
  }
}

/// Prints the messages of a stream of bytes after their offsets.
void decodeBytes(std::string_view start, Input& input, const ListingForm& form) {
  if (form.wallClock) {
    throw Failure("--wall-clock: " + input.name() + " is no trace, and tells no time");
  }
  Listing listing(std::cout, form);
  StreamCounts counts;
  StreamDecoder decoder([&](const StreamItem& item) {
    counts.add(item);
    listing.add(item);
  });
  passAll(start, input,
          [&](std::string_view text) { decoder.push(Bytes(text.begin(), text.end())); });
  decoder.finish();
  listing.conclude(counts.text());
}

void decodeTrace(std::string_view start, Input& input, const ListingForm& form) {
  Transcript transcript(std::cout, form);
  TraceParser parser(input.name());
  const auto add = [&](const TraceRecord& record) {
    if (parser.started()) {
      transcript.setStart(*parser.started());
    } else if (form.wallClock) {
      throw Failure("--wall-clock: " + input.name() + " does not tell when it began");
    }
    transcript.add(record);
  };
  passAll(start, input, [&](std::string_view text) { parser.push(text, add); });
  parser.finish(add);
  transcript.finish();
  if (parser.isCut()) {
    warnOfCutTrace(input.name());
  }
}

int decode(const std::filesystem::path& file, const ListingForm& form) {
  std::ios::sync_with_stdio(false);
  Input input(file);
  std::string start(input.read());
  while (!TraceParser::isTrace(start)) {
    const std::string_view more = input.read();
    if (more.empty()) {
      break;
    }
    start += more;
  }
  TraceParser::isTrace(start).value_or(false) ? decodeTrace(start, input, form)
                                              : decodeBytes(start, input, form);
  requireOutput();
  return 0;
}

}  // namespace

void addDecode(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand = addSubcommand(app, "decode", "[OPTIONS] [FILE]", kDecodeDescription);
  const auto file = std::make_shared<std::filesystem::path>();
  addPath(*subcommand, "FILE", "", *file, "Captured bytes, or a trace");
  const auto form = addListingOptions(*subcommand);
  invocation.actions[subcommand] = [file, form] { return decode(*file, *form); };
}

}  // namespace orb::sim
