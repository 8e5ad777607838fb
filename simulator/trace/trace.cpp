#include "orb-sim/trace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "trace/hex.h"
#include "trace/utc_time.h"

namespace orb::sim {
namespace {

using nlohmann::json;
using std::chrono::microseconds;

constexpr int kVersion = 1;
constexpr std::string_view kStart = R"({"orb-sim-trace":)";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors put it first

/// What is wrong with a line; the parser adds file and line.
class Problem : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

json parseObject(const std::string& line) {
  json object = json::parse(line, nullptr, false);
  if (!object.is_object()) {
    throw Problem("not a JSON object");
  }
  return object;
}

const json& member(const json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) {
    throw Problem(std::string("\"") + name + "\" is missing");
  }
  return *found;
}

/// Checks the header; returns when the trace began, where that is told.
std::optional<WallTime> startedIn(const json& header) {
  const auto version = header.find("orb-sim-trace");
  if (version == header.end()) {
    throw Problem("not a trace: it does not begin with \"orb-sim-trace\"");
  }
  if (version->is_structured()) {
    throw Problem("\"orb-sim-trace\" is no version");  // printed, it could nest without end
  }
  if (*version != kVersion) {
    throw Problem("traces of version " + version->dump() + " are not known");
  }
  const auto started = header.find("started");
  return started != header.end() && started->is_string() ? parseUtc(started->get<std::string>())
                                                         : std::nullopt;
}

microseconds timeOf(const json& record) {
  constexpr double kLongestTrace = 1e9;  // seconds, some 30 years
  constexpr double kMicrosecondsPerSecond = 1e6;
  const json& time = member(record, "time");
  if (!time.is_number()) {
    throw Problem("\"time\" is not a number of seconds");
  }
  const double seconds = time.get<double>();
  if (seconds < 0 || seconds > kLongestTrace) {
    throw Problem("\"time\" is out of range");
  }
  return microseconds(std::llround(seconds * kMicrosecondsPerSecond));
}

Speaker speakerOf(const json& record) {
  const json& from = member(record, "from");
  for (const Speaker speaker : {Speaker::Client, Speaker::Receiver}) {
    if (from == nameOf(speaker)) {
      return speaker;
    }
  }
  throw Problem(R"("from" is neither "client" nor "receiver")");
}

Bytes bytesOf(const json& record) {
  const json& digits = member(record, "bytes");
  std::optional<Bytes> bytes;
  if (digits.is_string()) {
    bytes = fromHex(digits.get_ref<const std::string&>());
  }
  if (!bytes) {
    throw Problem("\"bytes\" is not a text of hexadecimal digits, two a byte");
  }
  return *std::move(bytes);
}

TraceRecord recordOf(const json& object, microseconds previous) {
  TraceRecord record{timeOf(object), speakerOf(object), bytesOf(object)};
  if (record.at < previous) {
    throw Problem("\"time\" is earlier than in the line before");
  }
  return record;
}

/// How many bytes of a trace its lines take, without a last one that has no end.
std::uintmax_t lengthOfLines(const std::filesystem::path& file) {
  const std::uintmax_t size = std::filesystem::file_size(file);
  std::string end(std::min<std::uintmax_t>(size, TraceParser::kLongestLine + 1), '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(static_cast<std::streamoff>(size - end.size()));
  stream.read(end.data(), static_cast<std::streamsize>(end.size()));
  const std::size_t last = end.rfind('\n');
  return last == std::string::npos ? 0 : size - (end.size() - 1 - last);
}

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), file.string());
}

}  // namespace

const char* nameOf(Speaker speaker) { return speaker == Speaker::Client ? "client" : "receiver"; }

std::optional<bool> TraceParser::isTrace(std::string_view start) {
  if (kByteOrderMark.starts_with(start.substr(0, kByteOrderMark.size()))) {
    start.remove_prefix(std::min(start.size(), kByteOrderMark.size()));
  }
  if (start.size() < kStart.size() && kStart.starts_with(start)) {
    return std::nullopt;
  }
  return start.starts_with(kStart);
}

void TraceParser::push(std::string_view text, const Sink& sink) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    line_ += text.substr(0, end);
    if (line_.size() > kLongestLine) {
      fail("the line is too long");
    }
    if (end == std::string_view::npos) {
      return;
    }
    text.remove_prefix(end + 1);
    takeLine(sink);
  }
}

void TraceParser::finish(const Sink& sink) {
  isCut_ = hasHeader_ && !line_.empty() && !json::accept(line_);
  if (!line_.empty() && !isCut_) {
    takeLine(sink);
  }
  if (!hasHeader_) {
    fail("the trace is empty");
  }
}

void TraceParser::takeLine(const Sink& sink) {
  TraceRecord record;
  try {
    if (!hasHeader_ && line_.starts_with(kByteOrderMark)) {
      line_.erase(0, kByteOrderMark.size());
    }
    const json object = parseObject(line_);
    if (hasHeader_) {
      record = recordOf(object, last_);
    } else {
      started_ = startedIn(object);
    }
  } catch (const Problem& problem) {
    fail(problem.what());
  }
  line_.clear();
  ++lineNumber_;
  last_ = record.at;
  if (hasHeader_) {
    sink(record);
  }
  hasHeader_ = true;
}

void TraceParser::fail(const std::string& problem) const {
  throw std::runtime_error(name_ + ":" + std::to_string(lineNumber_) + ": " + problem);
}

namespace {

/// Passes on the records of a trace file; returns the parser that has read it.
TraceParser parseFile(const std::filesystem::path& file, const TraceParser::Sink& sink) {
  TraceParser parser(file.string());
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    fail(file);
  }
  std::array<char, 65536> block;
  do {
    stream.read(block.data(), block.size());
    parser.push({block.data(), static_cast<std::size_t>(stream.gcount())}, sink);
  } while (stream);
  if (stream.bad()) {
    fail(file);
  }
  parser.finish(sink);
  return parser;
}

}  // namespace

std::vector<TraceRecord> loadTrace(const std::filesystem::path& file, bool* isCut) {
  std::vector<TraceRecord> records;
  const TraceParser parser =
      parseFile(file, [&](const TraceRecord& record) { records.push_back(record); });
  if (isCut != nullptr) {
    *isCut = parser.isCut();
  }
  return records;
}

TraceWriter::TraceWriter(std::filesystem::path file, std::string device)
    : file_(std::move(file)), device_(std::move(device)) {
  begin();
}

TraceWriter::TraceWriter(const std::filesystem::path& file, bool* isCut) : file_(file) {
  const TraceParser parser =
      parseFile(file, [this](const TraceRecord& record) { start_ = record.at; });
  const std::uintmax_t lines = lengthOfLines(file);
  const bool lacksItsEnd = lines != std::filesystem::file_size(file) && !parser.isCut();
  if (parser.isCut()) {
    std::filesystem::resize_file(file, lines);
  }
  if (isCut != nullptr) {
    *isCut = parser.isCut();
  }
  if (parser.started()) {
    start_ = std::max(start_, wallTimeNow() - *parser.started());
  }
  errno = 0;
  stream_.open(file, std::ios::binary | std::ios::app);
  if (!stream_) {
    fail(file);
  }
  if (lacksItsEnd) {
    writeLine("");
  }
}

void TraceWriter::rotateAt(std::uintmax_t size, const std::string& device) {
  largest_ = size;
  device_ = device;
  size_ = std::filesystem::file_size(file_);
}

/// Begins an empty file.
void TraceWriter::begin() {
  errno = 0;
  stream_.open(file_, std::ios::binary | std::ios::trunc);
  if (!stream_) {
    fail(file_);
  }
  size_ = 0;
  nlohmann::ordered_json header;
  header["orb-sim-trace"] = kVersion;
  header["started"] = utcText(wallTimeNow());
  header["device"] = device_;
  // A name that is no UTF-8 is noted as well as it goes.
  writeLine(header.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void TraceWriter::write(const TraceRecord& record) {
  const auto lineAt = [&record](microseconds at) {
    nlohmann::ordered_json line;
    line["time"] = std::chrono::duration<double>(at).count();
    line["from"] = nameOf(record.from);
    line["bytes"] = toHex(record.bytes);
    return line.dump();
  };
  std::string line = lineAt(start_ + record.at);
  if (largest_ != 0 && size_ + line.size() >= largest_) {
    stream_.close();
    std::filesystem::rename(file_, file_.string() + ".1");
    begin();
    start_ = -record.at;
    line = lineAt(microseconds{0});
  }
  writeLine(line);
}

void TraceWriter::writeLine(const std::string& line) {
  errno = 0;
  stream_ << line << '\n' << std::flush;
  size_ += line.size() + 1;
  if (!stream_) {
    fail(file_);
  }
}

}  // namespace orb::sim
