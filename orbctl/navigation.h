#pragma once

#include <csignal>
#include <string>

#include "orbctl/session.h"
#include "orbctl/settings.h"

namespace orb::ctl {

/// Has the receiver send binary navigation data, and at the end what it sent before: text, or
/// nothing.
///
/// Signals that end a program wait until the output is as it was.
class BinaryOutput {
 public:
  /// Listens to the line to know what is sent. Throws Failure where that is not known.
  explicit BinaryOutput(Session& session);
  BinaryOutput(const BinaryOutput&) = delete;
  BinaryOutput& operator=(const BinaryOutput&) = delete;
  ~BinaryOutput();

 private:
  void blockSignals();
  void restore();

  Session& session_;
  sigset_t signalsBefore_{};
  std::string before_;  // empty where nothing was changed
};

/// Fix, satellites, GPS week and time of week, position; needs binary output.
Json readSolution(Session& session);

/// The same, with the output changed for as long as it takes.
Json readNavigation(Session& session);

/// GPS time in the receiver's units, and UTC where the receiver knows it.
Json readTime(Session& session);

/// Survey mode, saved position, length and deviation; of a survey, as far as the receiver tells, in
/// which mode it is at present and for how many seconds it has surveyed.
Json readSurvey(Session& session);

/// Whether interference is looked for, and what was found.
Json readInterference(Session& session);

// For a person, what they have read.

std::string describeTime(const Json& time);
std::string describeSurvey(const Json& survey);
std::string describeInterference(const Json& interference);

}  // namespace orb::ctl
