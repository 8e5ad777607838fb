#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "base/owned_descriptor.h"
#include "orb-sim/trace.h"
#include "program/command_line.h"
#include "program/standard_streams.h"
#include "trace/description.h"
#include "trace/stream_decoder.h"
#include "trace/transcript.h"

namespace orb::sim {
namespace {

constexpr char kDecodeDescription[] =
    "Prints captured bytes as messages, and how many were good, bad and unknown\n\n"
    "Takes any bytes, and traces of orb-sim tap. Without FILE, or with -, reads standard input\n"
    "and prints what comes as it comes.";

/// A file, or standard input.
class Input {
 public:
  explicit Input(const std::string& file) {
    if (!file.empty() && file != "-") {
      name_ = file;
      opened_ = {open(file.c_str(), O_RDONLY | O_CLOEXEC), file};
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

/// Prints the messages of a stream of bytes after their offsets.
class RawPrinter {
 public:
  void push(std::string_view text) { decoder_.push(Bytes(text.begin(), text.end())); }

  void finish() {
    decoder_.finish();
    std::cout << counts_.text() << '\n';
  }

 private:
  void print(const StreamItem& item) {
    std::array<char, 32> offset{};
    std::snprintf(offset.data(), offset.size(), "%10llu  ",
                  static_cast<unsigned long long>(item.offset));
    counts_.add(item);
    std::cout << offset.data() << describe(item) << '\n';
  }

  StreamCounts counts_;
  StreamDecoder decoder_{[this](const StreamItem& item) { print(item); }};
};

/// Prints the messages of a trace.
class TracePrinter {
 public:
  explicit TracePrinter(const std::string& name) : parser_(name) {}

  void push(std::string_view text) { parser_.push(text, sink_); }

  void finish() {
    parser_.finish(sink_);
    transcript_.finish();
  }

 private:
  Transcript transcript_{std::cout};
  TraceParser parser_;
  TraceParser::Sink sink_ = [this](const TraceRecord& record) { transcript_.add(record); };
};

/// Prints `start` and what follows it. Where the input pauses, all that has come is shown.
template <typename Printer>
void print(Printer printer, std::string_view start, Input& input) {
  for (std::string_view text = start; !text.empty(); text = input.read()) {
    printer.push(text);
    requireOutput();
  }
  printer.finish();
  requireOutput();
}

int decode(const std::string& file) {
  std::ios::sync_with_stdio(false);
  Input input(file);
  std::string start(input.read());
  while (start.size() < TraceParser::kStart.size() && TraceParser::kStart.starts_with(start)) {
    const std::string_view more = input.read();
    if (more.empty()) {
      break;
    }
    start += more;
  }
  if (start.starts_with(TraceParser::kStart)) {
    print(TracePrinter(input.name()), start, input);
  } else {
    print(RawPrinter(), start, input);
  }
  return 0;
}

}  // namespace

void addDecode(CLI::App& app, Invocation& invocation) {
  CLI::App* const subcommand = addSubcommand(app, "decode", "[FILE]", kDecodeDescription);
  const auto file = std::make_shared<std::string>();
  refuseEmpty(subcommand->add_option("FILE", *file, "Captured bytes, or a trace"));
  subcommand->callback(
      [file, &invocation] { invocation.action = [file] { return decode(*file); }; });
}

}  // namespace orb::sim
