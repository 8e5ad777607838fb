#pragma once

#include <vector>

#include "orb-sim/faults.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/scenario.h"
#include "orb-sim/state.h"
#include "scenario/section.h"

// One reader for each table of a scenario file, or for a part of it. What the table names
// overwrites what is there.
namespace orb::sim {

/// [device]
void readDevice(Section& device, Scenario& scenario);

/// [receiver] and its tables
void readReceiver(Section& receiver, State& state);

/// The part of it about pulses, and [receiver.timing]
void readPulsesAndTiming(Section& receiver, State& state);

/// [position], [track], [[satellite]] and [solution]
void readSurroundings(Section& file, State& state);

/// [time]
void readTime(Section& time, State& state);

/// [start]
void readStart(Section& start, Scenario& scenario);

/// [line]
void readLine(Section& line, LineConditions& conditions);

/// [[fault]]
void readFault(Section& fault, std::vector<FaultRule>& rules);

}  // namespace orb::sim
