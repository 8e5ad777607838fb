#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "orb-sim/trace.h"
#include "trace/hex.h"
#include "trace/members.h"

namespace orb::sim {
namespace {

using nlohmann::json;
using std::chrono::microseconds;

/// What is wrong with a line; the parser adds file and line.
class Problem : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

json parseObject(const std::string& line) {
  try {
    json object = json::parse(line);
    if (object.is_object()) return object;
  } catch (const json::exception&) {
    // The same to the reader: this line is not what it should be.
  }
  throw Problem("not a JSON object");
}

const json& member(const json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) throw Problem(std::string("\"") + name + "\" is missing");
  return *found;
}

void checkHeader(const json& header) {
  if (!header.contains(trace_member::kVersion)) {
    throw Problem("not a trace: it does not begin with \"orb-sim-trace\"");
  }
  const json& version = header[trace_member::kVersion];
  if (version != trace_member::kCurrentVersion) {
    throw Problem("traces of version " + version.dump() + " are not known");
  }
}

microseconds timeOf(const json& record) {
  constexpr double kLongestTrace = 1e9;  // seconds, some 30 years
  constexpr double kMicrosecondsPerSecond = 1e6;
  const json& time = member(record, trace_member::kTime);
  if (!time.is_number()) throw Problem("\"time\" is not a number of seconds");
  const double seconds = time.get<double>();
  if (seconds < 0 || seconds > kLongestTrace) throw Problem("\"time\" is out of range");
  return microseconds(std::llround(seconds * kMicrosecondsPerSecond));
}

Speaker speakerOf(const json& record) {
  const json& from = member(record, trace_member::kFrom);
  if (from == trace_member::kClient) return Speaker::Client;
  if (from == trace_member::kReceiver) return Speaker::Receiver;
  throw Problem(R"("from" is neither "client" nor "receiver")");
}

Bytes bytesOf(const json& record) {
  const json& digits = member(record, trace_member::kBytes);
  std::optional<Bytes> bytes;
  if (digits.is_string()) bytes = fromHex(digits.get_ref<const std::string&>());
  if (!bytes) throw Problem("\"bytes\" is not a text of hexadecimal digits, two a byte");
  return *std::move(bytes);
}

TraceRecord recordOf(const json& object, microseconds previous) {
  TraceRecord record{timeOf(object), speakerOf(object), bytesOf(object)};
  if (record.at < previous) throw Problem("\"time\" is earlier than in the line before");
  return record;
}

}  // namespace

void TraceParser::push(std::string_view text, const Sink& sink) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    line_ += text.substr(0, end);
    if (line_.size() > kLongestLine) fail("the line is too long");
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
    takeLine(sink);
  }
}

void TraceParser::finish(const Sink& sink) {
  if (!line_.empty()) takeLine(sink);
  if (!hasHeader_) fail("the trace is empty");
}

void TraceParser::takeLine(const Sink& sink) {
  TraceRecord record;
  try {
    const json object = parseObject(line_);
    if (hasHeader_) {
      record = recordOf(object, last_);
    } else {
      checkHeader(object);
    }
  } catch (const Problem& problem) {
    fail(problem.what());
  }
  line_.clear();
  ++lineNumber_;
  last_ = record.at;
  if (hasHeader_) sink(record);
  hasHeader_ = true;
}

void TraceParser::fail(const std::string& problem) const {
  throw std::runtime_error(name_ + ":" + std::to_string(lineNumber_) + ": " + problem);
}

}  // namespace orb::sim
