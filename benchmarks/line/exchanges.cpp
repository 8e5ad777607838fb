// Whole exchanges with a far end that answers at once: against the least that one can cost, and
// against libmodbus RTU.

#include <modbus/modbus.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "limits/bare_loop.h"
#include "line/far_end.h"
#include "line/latency.h"
#include "line/query.h"
#include "support/turns.h"
#include "support/work.h"

namespace {

using orb::bench::Blocks;
using orb::bench::Bytes;
using orb::bench::FarEnd;
using orb::bench::Row;

constexpr int kBlocks = 21;
constexpr int kPairsPerBlock = 150;
constexpr double kMedian = 0.5;

Row rowOf(const Blocks& times, double share, Row row) {
  const std::vector<double> ratios = times.ratios(share);
  row.value = Blocks::medianQuantile(times.work, share);
  row.limit = Blocks::medianQuantile(times.limit, share);
  row.ratio = orb::bench::median(ratios);
  row.samples = ratios;
  return row;
}

void queryByBareLoop(const std::string& tty) {
  if (!orb::bench::exchangeByBareLoop(tty, orb::bench::kMasksQuery, orb::bench::kMasksReply)) {
    throw std::runtime_error("the bare loop read another answer");
  }
}

std::vector<Row> queryAtOnce() {
  const FarEnd farEnd({{orb::bench::kStartByte, orb::bench::kMasksReply}});
  const Blocks times =
      orb::bench::compare([&] { orb::bench::queryByLibrary(farEnd.tty()); },
                          [&] { queryByBareLoop(farEnd.tty()); }, kBlocks, kPairsPerBlock);
  return {rowOf(times, kMedian,
                {.work = "query-p50",
                 .title = "query over a pty, answered at once, p50",
                 .unit = "us",
                 .bound = 1.3}),
          rowOf(times, 0.99,
                {.work = "query-p99",
                 .title = "query over a pty, answered at once, p99",
                 .unit = "us",
                 .bound = 2})};
}

constexpr unsigned char kSlave = 1;
// Its registers 0 to 2 hold 1, 2 and 3. Query and answer are as long as those of the
// receiver's masks.
const Bytes kRegistersReply{kSlave, 0x03, 0x06, 0x00, 0x01, 0x00, 0x02, 0x00, 0x03, 0xFD, 0x74};

/// A client of libmodbus.
class Modbus {
 public:
  explicit Modbus(const std::string& tty)
      : context_(modbus_new_rtu(tty.c_str(), 115200, 'N', 8, 1), modbus_free) {
    check(context_ == nullptr ? -1 : modbus_set_slave(context_.get(), kSlave));
  }

  void connect() { check(modbus_connect(context_.get())); }
  void close() { modbus_close(context_.get()); }
  void read() {
    uint16_t registers[3];
    check(modbus_read_registers(context_.get(), 0, 3, registers));
    if (registers[2] != 3) {
      throw std::runtime_error("libmodbus read another value");
    }
  }

 private:
  static void check(int result) {
    if (result < 0) {
      throw std::runtime_error(std::string("libmodbus: ") + modbus_strerror(errno));
    }
  }

  std::unique_ptr<modbus_t, decltype(&modbus_free)> context_;
};

std::vector<Row> againstModbus() {
  const FarEnd farEnd(
      {{orb::bench::kStartByte, orb::bench::kMasksReply}, {kSlave, kRegistersReply}});
  const auto compare = [](const auto& work, const auto& limit, const char* name, const char* title,
                          std::optional<double> bound) {
    const Blocks times = orb::bench::compare(work, limit, kBlocks, kPairsPerBlock);
    return rowOf(times, kMedian, {.work = name, .title = title, .unit = "us", .bound = bound});
  };
  const auto query = [&] { orb::bench::queryByLibrary(farEnd.tty()); };

  Modbus connecting(farEnd.tty());
  const auto connectAndRead = [&] {
    connecting.connect();
    connecting.read();
    connecting.close();
  };
  const Row whole = compare(query, connectAndRead, "modbus-connecting",
                            "query to libmodbus RTU that connects each time, p50", 1);

  Modbus open(farEnd.tty());
  open.connect();
  const auto read = [&] { open.read(); };
  orb::bench::LibraryQuery channel(farEnd.tty());
  const auto queryOnly = [&] {
    channel.send();
    channel.receive();
  };
  const Row kept = compare(queryOnly, read, "modbus-open",
                           "query to libmodbus RTU, both keep the port open, p50", 1);

  // Shown, not bounded: what the library opens and closes each time libmodbus does not.
  const Row opening = compare(query, read, "modbus-opening",
                              "query that opens to libmodbus RTU that does not, p50", std::nullopt);
  open.close();
  return {whole, kept, opening};
}

const orb::bench::Work kWorks[] = {{"query", queryAtOnce}, {"modbus", againstModbus}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
