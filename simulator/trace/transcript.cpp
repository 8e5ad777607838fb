#include "trace/transcript.h"

namespace orb::sim {

Transcript::Side::Side(Transcript& transcript, Speaker speaker)
    : decoder([this, &transcript, speaker](const StreamItem& item) {
        counts.add(item);
        transcript.listing_.add(item, speaker, last);
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
  listing_.conclude("client: " + client_.counts.text());
  listing_.conclude("receiver: " + receiver_.counts.text());
}

}  // namespace orb::sim
