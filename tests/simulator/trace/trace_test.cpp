#include "orb-sim/trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <system_error>

#include "rate_query.h"
#include "support/temporary_folder.h"
#include "trace/utc_time.h"

namespace orb::sim {

bool operator==(const TraceRecord& left, const TraceRecord& right) {
  return left.at == right.at && left.from == right.from && left.bytes == right.bytes;
}

}  // namespace orb::sim

namespace orb::test {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;
using testing::IsEmpty;

constexpr char kHeader[] = R"({"orb-sim-trace":1})";

class Trace : public testing::Test {
 protected:
  std::filesystem::path write(const std::string& text) const {
    std::ofstream(file_, std::ios::binary) << text;
    return file_;
  }

  std::string written() const {
    std::ifstream stream(file_, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// What is said of a trace with these lines after the header.
  std::string errorOf(const std::string& text) const {
    try {
      sim::loadTrace(write(text));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no error";
  }

  std::string errorAt(int line, const std::string& problem) const {
    return file_.string() + ":" + std::to_string(line) + ": " + problem;
  }

  const TemporaryFolder folder_;
  const std::filesystem::path file_ = folder_.path() / "a.trace";
};

TEST_F(Trace, IsReadAsItWasWritten) {
  const std::vector<sim::TraceRecord> records{
      {microseconds(0), sim::Speaker::Client, hex("A0 A1 00")},
      {microseconds(1), sim::Speaker::Receiver, hex("00 FF 7F")},
      {microseconds(1), sim::Speaker::Receiver, {}},
      {seconds(100'000'000) + microseconds(123'457), sim::Speaker::Client, sim::Bytes(5000, 0xAB)},
  };
  sim::TraceWriter writer(file_, "/dev/ttyS1");
  for (const sim::TraceRecord& record : records) {
    writer.write(record);
  }
  EXPECT_EQ(sim::loadTrace(file_), records);
}

TEST_F(Trace, IsALineForEachPieceAfterAHeader) {
  sim::TraceWriter writer(file_, "/dev/\"odd\"\n\xFF");
  writer.write({microseconds(1'234'567), sim::Speaker::Client, hex("A0 0d")});
  writer.write({microseconds(2'000'000), sim::Speaker::Receiver, hex("01")});
  EXPECT_THAT(written(), testing::MatchesRegex(
                             R"(\{"orb-sim-trace":1,"started":"20..-..-..T..:..:..[.]......Z",)"
                             R"("device":"/dev/\\"odd\\"\\n.*"\})"
                             "\n"
                             R"(\{"time":1.234567,"from":"client","bytes":"A00D"\})"
                             "\n"
                             R"(\{"time":2.0,"from":"receiver","bytes":"01"\})"
                             "\n"));
}

TEST_F(Trace, ReplacesAnEarlierOneAndIsWholeUpToItsLastLineWhileItIsWritten) {
  write("something longer than the header of a trace, so that some of it would stay after it");
  sim::TraceWriter writer(file_, "/dev/ttyS1");
  EXPECT_THAT(sim::loadTrace(file_), IsEmpty());
  writer.write({microseconds(1), sim::Speaker::Client, hex("01")});
  EXPECT_EQ(sim::loadTrace(file_).size(), 1U);
}

TEST_F(Trace, MayHaveMoreMembersAndNoLastNewline) {
  const std::vector<sim::TraceRecord> expected{{seconds(2), sim::Speaker::Client, hex("AB")}};
  EXPECT_EQ(sim::loadTrace(write(R"({"orb-sim-trace":1,"by":"hand"})"
                                 "\r\n"
                                 R"({"time":2,"note":[1,{}],"bytes":"aB","from":"client"})")),
            expected);
}

TEST_F(Trace, IsContinuedWhereItEnded) {
  const sim::TraceRecord record{seconds(2), sim::Speaker::Client, hex("01")};
  sim::TraceWriter(file_, "/dev/ttyS1").write(record);
  sim::TraceWriter(file_).write(record);
  sim::TraceWriter(file_).write(record);
  std::vector<sim::TraceRecord> expected(3, record);
  expected[1].at = seconds(4);
  expected[2].at = seconds(6);
  EXPECT_EQ(sim::loadTrace(file_), expected);
}

TEST_F(Trace, IsContinuedAfterItsLastWholeLine) {
  const sim::TraceRecord record{seconds(0), sim::Speaker::Client, hex("01")};
  const std::string line = R"({"time":1,"from":"client","bytes":"02"})";
  bool isCut = false;
  write(std::string(kHeader) + "\n" + line + "\n{\"time\":1");
  sim::TraceWriter(file_, &isCut).write(record);
  EXPECT_TRUE(isCut);
  EXPECT_EQ(sim::loadTrace(file_).size(), 2U);
  write(std::string(kHeader) + "\n" + line);  // only the line's end is missing
  sim::TraceWriter(file_, &isCut).write(record);
  EXPECT_FALSE(isCut);
  EXPECT_EQ(sim::loadTrace(file_).size(), 2U);
}

TEST_F(Trace, GoesOnByTheClock) {
  const auto yesterday = sim::wallTimeNow() - std::chrono::hours(24);
  write(R"({"orb-sim-trace":1,"started":")" + sim::utcText(yesterday) + "\"}\n");
  sim::TraceWriter(file_).write({seconds(2), sim::Speaker::Client, {}});
  const auto at = sim::loadTrace(file_).at(0).at;
  EXPECT_GE(at, std::chrono::hours(24) + seconds(2));
  EXPECT_LT(at, std::chrono::hours(25));
}

TEST_F(Trace, TellsWhenItBegan) {
  const auto startedIn = [](const std::string& header) {
    sim::TraceParser parser("trace");
    parser.push(header + "\n", [](const sim::TraceRecord&) {});
    return parser.started();
  };
  EXPECT_EQ(startedIn(R"({"orb-sim-trace":1,"started":"2026-11-21T08:43:11Z"})"),
            sim::parseUtc("2026-11-21T08:43:11Z"));
  EXPECT_EQ(startedIn(kHeader), std::nullopt);
  EXPECT_EQ(startedIn(R"({"orb-sim-trace":1,"started":"today"})"), std::nullopt);
  EXPECT_EQ(startedIn(R"({"orb-sim-trace":1,"started":7})"), std::nullopt);
}

TEST_F(Trace, GoesOnInANewFileBeforeItGetsTooLarge) {
  constexpr std::uintmax_t kLargest = 400;
  const std::filesystem::path before = file_.string() + ".1";
  sim::TraceWriter writer(file_, "/dev/ttyS1");
  writer.rotateAt(kLargest, "/dev/ttyS1");
  const auto at = [](int i) { return seconds(i) + microseconds(i); };
  for (int i = 1; i <= 50; ++i) {
    writer.write({at(i), sim::Speaker::Client, {static_cast<std::uint8_t>(i)}});
    EXPECT_LE(file_size(file_), kLargest);
    const std::vector<sim::TraceRecord> records = sim::loadTrace(file_);
    ASSERT_FALSE(records.empty());
    const int first = records.front().bytes.at(0);
    EXPECT_EQ(records.front().at, first == 1 ? at(1) : microseconds(0));
    EXPECT_EQ(records.back().at - records.front().at, at(i) - at(first));
    EXPECT_EQ(records.back().bytes, sim::Bytes{static_cast<std::uint8_t>(i)});
    if (first != 1) {
      EXPECT_EQ(sim::loadTrace(before).back().bytes.at(0), first - 1) << "nothing is lost";
    }
  }
  EXPECT_GT(file_size(before), kLargest / 2);
  EXPECT_FALSE(exists(std::filesystem::path(file_.string() + ".2")));
}

TEST_F(Trace, IsRotatedWhereItIsContinued) {
  sim::TraceWriter(file_, "/dev/ttyS1").write({seconds(1), sim::Speaker::Client, {1}});
  sim::TraceWriter writer(file_);
  writer.rotateAt(file_size(file_) + 1, "/dev/ttyS2");
  writer.write({seconds(5), sim::Speaker::Client, {2}});
  EXPECT_THAT(written(), testing::HasSubstr("/dev/ttyS2"));
  EXPECT_EQ(sim::loadTrace(file_),
            (std::vector<sim::TraceRecord>{{seconds(0), sim::Speaker::Client, {2}}}));
  EXPECT_EQ(sim::loadTrace(file_.string() + ".1").at(0).bytes, sim::Bytes{1});
}

TEST_F(Trace, IsTakenToItsLastWholeLine) {
  const std::string line = R"({"time":1,"from":"client","bytes":"AB"})";
  for (std::size_t size = 1; size <= line.size(); ++size) {
    bool isCut = false;
    write(std::string(kHeader) + "\n" + line + "\n" + line.substr(0, size));
    const bool isWhole = size == line.size();
    EXPECT_EQ(sim::loadTrace(file_, &isCut).size(), isWhole ? 2U : 1U) << size;
    EXPECT_EQ(isCut, !isWhole);
  }
}

TEST_F(Trace, MayBeginWithAByteOrderMark) {
  const std::string text = "\xEF\xBB\xBF" + std::string(kHeader) + "\n";
  EXPECT_THAT(sim::loadTrace(write(text)), IsEmpty());
  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_NE(sim::TraceParser::isTrace(text.substr(0, size)), false) << size;
  }
  EXPECT_EQ(sim::TraceParser::isTrace(text), true);
  EXPECT_EQ(sim::TraceParser::isTrace("\xEF\xBB{"), false);
  EXPECT_EQ(sim::TraceParser::isTrace("{\"orb-sim-trace:1"), false);
}

TEST_F(Trace, HasAnErrorThatNamesFileAndLine) {
  const std::string header = std::string(kHeader) + "\n";
  const std::string good = R"({"time":1,"from":"client","bytes":""})";
  const std::pair<std::string, const char*> records[] = {
      {"{", "not a JSON object"},
      {"", "not a JSON object"},
      {"[]", "not a JSON object"},
      {good + "x", "not a JSON object"},
      {R"({"time":1e400,"from":"client","bytes":""})", "not a JSON object"},
      {R"({"from":"client","bytes":""})", R"("time" is missing)"},
      {R"({"time":"1","from":"client","bytes":""})", R"("time" is not a number of seconds)"},
      {R"({"time":-1,"from":"client","bytes":""})", R"("time" is out of range)"},
      {R"({"time":1e10,"from":"client","bytes":""})", R"("time" is out of range)"},
      {R"({"time":1,"bytes":""})", R"("from" is missing)"},
      {R"({"time":1,"from":"me","bytes":""})", R"("from" is neither "client" nor "receiver")"},
      {R"({"time":1,"from":"client"})", R"("bytes" is missing)"},
  };
  for (const auto& [record, problem] : records) {
    EXPECT_EQ(errorOf(header + record + "\n"), errorAt(2, problem)) << record;
    EXPECT_EQ(errorOf(header + good + "\n" + record + "\n"), errorAt(3, problem)) << record;
  }
  EXPECT_EQ(errorOf(header + good + "\n" + R"({"time":0.5,"from":"client","bytes":""})"),
            errorAt(3, R"("time" is earlier than in the line before)"));
  for (const char* const bytes : {"\"A\"", "\"0G\"", "\"A0 A1\"", "\"-1\"", "[160]", "null"}) {
    EXPECT_EQ(errorOf(header + R"({"time":1,"from":"client","bytes":)" + bytes + "}\n"),
              errorAt(2, R"("bytes" is not a text of hexadecimal digits, two a byte)"));
  }
}

TEST_F(Trace, IsRefusedWithoutItsHeader) {
  EXPECT_EQ(errorOf(""), errorAt(1, "the trace is empty"));
  EXPECT_EQ(errorOf("{}"), errorAt(1, "not a trace: it does not begin with \"orb-sim-trace\""));
  EXPECT_EQ(errorOf(R"({"orb-sim-trace":2})"), errorAt(1, "traces of version 2 are not known"));
}

TEST_F(Trace, IsRefusedWhereItsVersionIsNone) {
  const std::string deep = std::string(400'000, '[') + std::string(400'000, ']');
  for (const std::string& version : {std::string("[1]"), std::string("{}"), deep}) {
    EXPECT_EQ(errorOf("{\"orb-sim-trace\":" + version + "}"),
              errorAt(1, "\"orb-sim-trace\" is no version"));
  }
}

TEST_F(Trace, IsRefusedWhereALineIsTooLong) {
  EXPECT_EQ(
      errorOf(kHeader + std::string("\n") + std::string(sim::TraceParser::kLongestLine + 1, ' ')),
      errorAt(2, "the line is too long"));
}

TEST_F(Trace, IsNotMadeOrReadWhereThereIsNoFileOrNoRoom) {
  EXPECT_THROW(sim::TraceWriter("/dev/full", "x"), std::system_error);
  EXPECT_THROW(sim::TraceWriter(folder_.path() / "no" / "file", "x"), std::system_error);
  EXPECT_THROW(sim::loadTrace(file_), std::system_error);
  EXPECT_THROW(sim::loadTrace(folder_.path()), std::exception);
}

TEST(TraceParser, TakesTextThatIsCutAnywhere) {
  const std::string text = std::string(kHeader) + "\n" +
                           R"({"time":1,"from":"client","bytes":"01"})" + "\n" +
                           R"({"time":2,"from":"receiver","bytes":"02"})" + "\n";
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    sim::TraceParser parser("trace");
    sim::Bytes bytes;
    const auto sink = [&](const sim::TraceRecord& record) { sim::append(bytes, record.bytes); };
    parser.push(text.substr(0, cut), sink);
    parser.push(text.substr(cut), sink);
    parser.finish(sink);
    EXPECT_EQ(bytes, hex("01 02")) << "cut at " << cut;
  }
}

TEST(UtcTime, IsReadAsItIsWritten) {
  const std::pair<const char*, const char*> times[] = {
      {"2026-11-21T08:43:11Z", "2026-11-21T08:43:11.000000Z"},
      {"2024-02-29T23:59:59.999999Z", "2024-02-29T23:59:59.999999Z"},
      {"2000-01-01T00:00:00.25Z", "2000-01-01T00:00:00.250000Z"},
  };
  for (const auto& [text, expected] : times) {
    ASSERT_TRUE(sim::parseUtc(text)) << text;
    EXPECT_EQ(sim::utcText(*sim::parseUtc(text)), expected);
  }
  EXPECT_EQ(sim::parseUtc("1970-01-01T00:00:01.5Z")->time_since_epoch(),
            std::chrono::milliseconds(1500));
  for (const char* const text :
       {"", "2026-11-21", "2026-11-21T08:43:11", "2026-11-21T08:43:11.Z",
        "2026-11-21T08:43:11.1e9Z", "2026-11-21T08:43:11Zx", "2026-13-21T08:43:11Z"}) {
    EXPECT_FALSE(sim::parseUtc(text)) << text;
  }
}

}  // namespace
}  // namespace orb::test
