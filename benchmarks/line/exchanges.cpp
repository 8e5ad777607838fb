// Whole exchanges with a far end that answers at once: against the least that one can cost, and
// against libmodbus RTU.

#include <modbus/modbus.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "limits/bare_loop.h"
#include "line/far_end.h"
#include "line/query.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

constexpr std::size_t kPairsPerBlock = 150;
constexpr double kMicrosecond = 1000;

// Single exchanges in turns.
template <typename Work, typename Limit>
Turns exchangeInTurns(Work&& work, Limit&& limit) {
  constexpr int kBlocks = 21;
  return takeTimedTurns([&] { return timePerCall(work, 1, realNanoseconds); },
                        [&] { return timePerCall(limit, 1, realNanoseconds); },
                        kBlocks * static_cast<int>(kPairsPerBlock));
}

Row exchangeRow(std::string work, std::string title, const Turns& exchanges,
                std::optional<double> bound, double share = 0.5) {
  return compared(
      {.work = std::move(work), .title = std::move(title), .unit = "us", .bound = bound},
      quantilesOfBlocks(exchanges, kPairsPerBlock, share), kMicrosecond);
}

void queryByBareLoop(const std::string& tty) {
  if (!exchangeByBareLoop(tty, kMasksQuery, kMasksReply)) {
    throw std::runtime_error("the bare loop read another answer");
  }
}

std::vector<Row> queryAtOnce() {
  const FarEnd farEnd({{kStartByte, kMasksReply}});
  const Turns exchanges = exchangeInTurns([&] { queryByLibrary(farEnd.tty()); },
                                          [&] { queryByBareLoop(farEnd.tty()); });
  return {exchangeRow("query-p50", "query over a pty, answered at once, p50", exchanges, 1.3),
          exchangeRow("query-p99", "query over a pty, answered at once, p99", exchanges, 2, 0.99)};
}

constexpr unsigned char kSlave = 1;
// Its registers 0 to 2 hold 1, 2 and 3. Query and answer are as long as those of the
// receiver's masks.
const Bytes kRegistersReply{kSlave, 0x03, 0x06, 0x00, 0x01, 0x00, 0x02, 0x00, 0x03, 0xFD, 0x74};

// A client of libmodbus.
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
  const FarEnd farEnd({{kStartByte, kMasksReply}, {kSlave, kRegistersReply}});
  const auto query = [&] { queryByLibrary(farEnd.tty()); };

  Modbus connecting(farEnd.tty());
  const auto connectAndRead = [&] {
    connecting.connect();
    connecting.read();
    connecting.close();
  };
  const Row whole =
      exchangeRow("modbus-connecting", "query to libmodbus RTU that connects each time, p50",
                  exchangeInTurns(query, connectAndRead), 1);

  Modbus open(farEnd.tty());
  open.connect();
  const auto read = [&] { open.read(); };
  LibraryQuery channel(farEnd.tty());
  const auto queryOnly = [&] {
    channel.send();
    channel.receive();
  };
  const Row kept =
      exchangeRow("modbus-open", "query to libmodbus RTU, both keep the port open, p50",
                  exchangeInTurns(queryOnly, read), 1);

  // Shown, not bounded: what the library opens and closes each time libmodbus does not.
  const Row opening =
      exchangeRow("modbus-opening", "query that opens to libmodbus RTU that does not, p50",
                  exchangeInTurns(query, read), std::nullopt);
  open.close();
  return {whole, kept, opening};
}

const Work kWorks[] = {{"query", queryAtOnce}, {"modbus", againstModbus}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
