#include "trace/transcript.h"

#include <array>
#include <cstdio>
#include <ostream>

namespace orb::sim {
namespace {

using std::chrono::microseconds;

/// The beginning of a line: time in seconds, and who speaks.
std::string heading(microseconds at, Speaker speaker) {
  std::array<char, 64> text{};
  const double seconds = std::chrono::duration<double>(at).count();
  std::snprintf(text.data(), text.size(), "%12.6f  %-8s  ", seconds, nameOf(speaker));
  return text.data();
}

}  // namespace

Transcript::Side::Side(Transcript& transcript, Speaker speaker)
    : decoder([this, &transcript, speaker](const StreamItem& item) {
        counts.add(item);
        transcript.output_ << heading(last, speaker) << describe(item) << '\n';
      }) {}

Transcript::Side& Transcript::sideOf(Speaker speaker) {
  return speaker == Speaker::Client ? client_ : receiver_;
}

void Transcript::add(const TraceRecord& record) {
  letTimePass(record.at);
  Side& side = sideOf(record.from);
  side.last = record.at;
  side.decoder.push(record.bytes);
}

void Transcript::letTimePass(microseconds now) {
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
