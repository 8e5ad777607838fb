#include <array>
#include <cerrno>
#include <ctime>
#include <nlohmann/json.hpp>
#include <system_error>

#include "orb-sim/trace.h"
#include "trace/hex.h"
#include "trace/members.h"

namespace orb::sim {
namespace {

/// As in 2026-11-21T08:20:00Z.
std::string utcNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%FT%TZ", &parts);
  return text.data();
}

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), file.string());
}

}  // namespace

std::vector<TraceRecord> loadTrace(const std::filesystem::path& file) {
  std::vector<TraceRecord> records;
  const auto keep = [&](const TraceRecord& record) { records.push_back(record); };
  TraceParser parser(file.string());
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) fail(file);
  std::array<char, 65536> block;
  do {
    stream.read(block.data(), block.size());
    parser.push({block.data(), static_cast<std::size_t>(stream.gcount())}, keep);
  } while (stream);
  if (stream.bad()) fail(file);
  parser.finish(keep);
  return records;
}

TraceWriter::TraceWriter(const std::filesystem::path& file, const std::string& device)
    : file_(file) {
  errno = 0;
  stream_.open(file, std::ios::binary | std::ios::trunc);
  if (!stream_) fail(file);
  nlohmann::ordered_json header;
  header[trace_member::kVersion] = trace_member::kCurrentVersion;
  header[trace_member::kStarted] = utcNow();
  header[trace_member::kDevice] = device;
  // A name that is no UTF-8 is noted as well as it goes.
  writeLine(header.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void TraceWriter::write(const TraceRecord& record) {
  nlohmann::ordered_json line;
  line[trace_member::kTime] = std::chrono::duration<double>(record.at).count();
  line[trace_member::kFrom] =
      record.from == Speaker::Client ? trace_member::kClient : trace_member::kReceiver;
  line[trace_member::kBytes] = toHex(record.bytes);
  writeLine(line.dump());
}

void TraceWriter::writeLine(const std::string& line) {
  errno = 0;
  stream_ << line << '\n' << std::flush;
  if (!stream_) fail(file_);
}

}  // namespace orb::sim
