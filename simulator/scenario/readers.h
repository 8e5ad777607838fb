#pragma once

#include <vector>

#include "base/toml/table_reader.h"
#include "orb-sim/faults.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/scenario.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// What the receiver can be told to detect.
inline constexpr Word<std::uint8_t> kInterference[] = {
    {"unknown", 0}, {"none", 1}, {"some", 2}, {"critical", 3}};

inline constexpr double kFastestClock = 1000;  ///< seconds of the receiver in one of the client

// One reader for each table of a scenario file, or for a part of it. What the table names
// overwrites what is there.

void readDevice(TableReader& device, Scenario& scenario);
void readReceiver(TableReader& receiver, State& state);
void readSharedSettings(TableReader& table, Settings& settings);  ///< of [receiver] and [settings]
void readBackup(TableReader& file, State& state);                 ///< [settings], [survey]
void readSurroundings(TableReader& file, State& state);           ///< [position], [track], the sky
void readTime(TableReader& time, Scenario& scenario);
void readEvent(TableReader& event, std::vector<TimedEvent>& timeline);
void readStart(TableReader& start, Scenario& scenario);
void readLine(TableReader& line, LineConditions& conditions);
void readFault(TableReader& fault, std::vector<FaultRule>& rules);

}  // namespace orb::sim
