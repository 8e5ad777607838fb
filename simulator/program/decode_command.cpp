#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "line/owned_descriptor.h"
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

/// Prints the messages of a stream of bytes behind their offsets.
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

/// Decides by the first bytes which of the two prints.
class Printer {
 public:
  explicit Printer(std::string name) : name_(std::move(name)) {}

  void push(std::string_view text) {
    if (trace_) return trace_->push(text);
    if (!isRaw_) {
      start_ += text;
      const std::size_t length = std::min(start_.size(), TraceParser::kStart.size());
      isRaw_ = start_.compare(0, length, TraceParser::kStart, 0, length) != 0;
      if (!isRaw_ && length < TraceParser::kStart.size()) return;
      if (!isRaw_) trace_.emplace(name_);
      return push(std::exchange(start_, {}));
    }
    raw_.push(text);
  }

  void finish() {
    if (trace_) return trace_->finish();
    raw_.push(start_);
    raw_.finish();
  }

 private:
  std::string name_;
  std::string start_;  ///< what is not decided yet
  bool isRaw_ = false;
  RawPrinter raw_;
  std::optional<TracePrinter> trace_;
};

int decode(const std::string& file) {
  OwnedDescriptor opened;
  const bool isStandardInput = file.empty() || file == "-";
  if (!isStandardInput) opened = {open(file.c_str(), O_RDONLY | O_CLOEXEC), file};
  const int input = isStandardInput ? STDIN_FILENO : opened.get();
  const std::string name = isStandardInput ? "standard input" : file;

  std::ios::sync_with_stdio(false);
  Printer printer(name);
  std::array<char, 65536> block;
  for (;;) {
    const ssize_t count = read(input, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::system_error(errno, std::generic_category(), name);
    if (count == 0) break;
    printer.push({block.data(), static_cast<std::size_t>(count)});
    if (static_cast<std::size_t>(count) < block.size() || !std::cout) requireOutput();
  }
  printer.finish();
  requireOutput();
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
