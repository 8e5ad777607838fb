#pragma once

#include <string>

#include "orb-sim/bytes.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The binary navigation data packet of the present solution.
Bytes navigationData(const State& state);

/// The NMEA sentences that are due in the given epoch, counted from 1.
std::string nmeaSentences(const State& state, unsigned int epoch);

/// Puts "$", "*", the checksum and the line end around the fields of a sentence.
std::string nmeaSentence(const std::string& fields);

}  // namespace orb::sim
