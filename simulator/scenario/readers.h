#pragma once

#include <vector>

#include "orb-sim/faults.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/scenario.h"
#include "orb-sim/state.h"
#include "scenario/section.h"

// One reader for each table of a scenario file: it overwrites what the table names.
namespace orb::sim {

void readDevice(Section& device, Scenario& scenario);  // [device]
void readReceiver(Section& receiver, State& state);    // [receiver]
void readSurroundings(Section& file,
                      State& state);         // [position], [track], [[satellite]], [solution]
void readTime(Section& time, State& state);  // [time]
void readStart(Section& start, Scenario& scenario);             // [start]
void readLine(Section& line, LineConditions& conditions);       // [line]
void readFault(Section& fault, std::vector<FaultRule>& rules);  // [[fault]]

}  // namespace orb::sim
