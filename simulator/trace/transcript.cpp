#include "trace/transcript.h"

#include <ostream>

#include "model/nmea_format.h"

namespace orb::sim {

Transcript::Side::Side(Transcript& transcript, Speaker speaker)
    : decoder([this, &transcript, speaker](const StreamItem& item) {
        counts.add(item);
        const double seconds = std::chrono::duration<double>(last).count();
        transcript.output_ << format("%12.6f  %-8s  ", seconds, nameOf(speaker)) << describe(item)
                           << '\n';
      }) {}

void Transcript::add(const TraceRecord& record) {
  reach(record.at);
  Side& side = record.from == Speaker::Client ? client_ : receiver_;
  side.last = record.at;
  side.decoder.push(record.bytes);
}

void Transcript::reach(std::chrono::microseconds now) {
  for (Side* const side : {&client_, &receiver_}) {
    if (now - side->last >= kPatience) {
      side->decoder.finish();
    }
  }
}

bool Transcript::isMidItem() const {
  return client_.decoder.isMidItem() || receiver_.decoder.isMidItem();
}

void Transcript::finish() {
  client_.decoder.finish();
  receiver_.decoder.finish();
  output_ << "client: " << client_.counts.text() << '\n'
          << "receiver: " << receiver_.counts.text() << '\n';
}

}  // namespace orb::sim
