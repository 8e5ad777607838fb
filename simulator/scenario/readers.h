#pragma once

#include <vector>

#include "base/toml/table_reader.h"
#include "orb-sim/faults.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/scenario.h"
#include "orb-sim/state.h"

namespace orb::sim {

// One reader for each table of a scenario file, or for a part of it. What the table names
// overwrites what is there.

void readDevice(TableReader& device, Scenario& scenario);
void readReceiver(TableReader& receiver, State& state);
void readSurroundings(TableReader& file, State& state);  ///< [position], [track], the sky
void readTime(TableReader& time, Scenario& scenario);
void readStart(TableReader& start, Scenario& scenario);
void readLine(TableReader& line, LineConditions& conditions);
void readFault(TableReader& fault, std::vector<FaultRule>& rules);

}  // namespace orb::sim
