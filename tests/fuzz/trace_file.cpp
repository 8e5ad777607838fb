// Traces: any text, cut anywhere, then the device that plays the trace back and its transcript.
// Input: the lengths of three pieces, the text.

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "orb-sim/frame.h"
#include "orb-sim/replay.h"
#include "orb-sim/trace.h"
#include "support/check.h"
#include "support/input.h"
#include "trace/transcript.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using Records = std::vector<sim::TraceRecord>;

constexpr std::size_t kPieces = 3;
constexpr char kName[] = "f";

/// The records, or what is wrong with the text.
struct Parsed {
  Records records;
  std::string problem;
  std::optional<sim::WallTime> started;
  bool isCut = false;
};

Parsed parse(const std::vector<Bytes>& pieces) {
  Parsed parsed;
  const auto keep = [&](const sim::TraceRecord& record) { parsed.records.push_back(record); };
  sim::TraceParser parser(kName);
  try {
    for (const Bytes& piece : pieces) {
      parser.push({reinterpret_cast<const char*>(piece.data()), piece.size()}, keep);
    }
    parser.finish(keep);
    parsed.started = parser.started();
    parsed.isCut = parser.isCut();
  } catch (const std::runtime_error& error) {
    parsed.problem = error.what();
    check(parsed.problem.starts_with(std::string(kName) + ':'), "a problem names the file");
  }
  return parsed;
}

bool isEqual(const Records& left, const Records& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const sim::TraceRecord& a, const sim::TraceRecord& b) {
                      return a.at == b.at && a.from == b.from && a.bytes == b.bytes;
                    });
}

/// Reads the lines of a trace that has no problem once more, each by itself.
void compareWithLines(const Records& records, bool isCut, const Bytes& text) {
  constexpr int kBase = 16;
  std::istringstream lines(std::string(text.begin(), text.end()));
  std::string line;
  std::getline(lines, line);  // the header
  for (const sim::TraceRecord& record : records) {
    check(static_cast<bool>(std::getline(lines, line)), "a record has its line");
    const nlohmann::json object = nlohmann::json::parse(line);
    const std::string digits = object.at("bytes");
    check(digits.size() == 2 * record.bytes.size(), "a byte has two digits");
    for (std::size_t i = 0; i < record.bytes.size(); ++i) {
      check(std::stoi(digits.substr(2 * i, 2), nullptr, kBase) == record.bytes[i], "a byte");
    }
    const bool isClient = record.from == sim::Speaker::Client;
    check(object.at("from") == (isClient ? "client" : "receiver"), "who speaks");
  }
  const bool hasMore = static_cast<bool>(std::getline(lines, line));
  check(hasMore == isCut, "a line has its record, unless it is cut off");
}

void writeTranscript(const Records& trace, std::optional<sim::WallTime> started, bool json) {
  std::ostringstream text;
  sim::Transcript transcript(text, {.json = json, .wallClock = true});
  if (started) {
    transcript.setStart(*started);
  }
  for (const sim::TraceRecord& record : trace) {
    transcript.add(record);
  }
  transcript.finish();
  check(!transcript.isMidItem(), "the transcript is complete");
  check(json || text.str().ends_with('\n'), "it consists of lines");
  std::istringstream lines(text.str());
  for (std::string line; json && std::getline(lines, line);) {
    check(nlohmann::json::accept(line), "a line is an object of JSON");
  }
}

/// Says what the client said in the trace, and gives the device the time that it asks for.
void replay(const Records& trace, sim::ReplayDevice::Pace pace) {
  constexpr int kMostTicks = 20;
  sim::ReplayDevice device(trace, pace);
  for (const sim::TraceRecord& record : trace) {
    if (record.from != sim::Speaker::Client) {
      continue;
    }
    device.receive(record.bytes);
    for (int i = 0; i < kMostTicks && device.untilNextOutput() != sim::Device::kNever; ++i) {
      const milliseconds wait = device.untilNextOutput();
      check(wait >= milliseconds(0), "the next output is not past");
      device.tick(std::max(wait, milliseconds(1)));
    }
  }
}

}  // namespace

void tryInput(Input input) {
  const Bytes lengths = input.bytes(kPieces);
  const Bytes text = input.rest();
  const Parsed whole = parse({text});
  const Parsed inParts = parse(inPieces(text, lengths));
  checkEqual(inParts.problem, whole.problem, "the problem");
  check(isEqual(whole.records, inParts.records), "pieces make no difference");

  sim::TraceRecord last;
  for (const sim::TraceRecord& record : whole.records) {
    check(record.at >= last.at, "time goes on");
    last = record;
  }
  if (whole.problem.empty()) {
    compareWithLines(whole.records, whole.isCut, text);
    writeTranscript(whole.records, whole.started, false);
    writeTranscript(whole.records, whole.started, true);
    replay(whole.records, sim::ReplayDevice::Pace::Recorded);
    replay(whole.records, sim::ReplayDevice::Pace::Fast);
  }
}

}  // namespace orb::test
