#pragma once

#include <fstream>

namespace orb {

/// Opens a log to add lines to it. Programs that this one starts do not inherit it, and it never
/// takes the number of a standard stream that is closed: what is printed would land in it.
void openLog(std::ofstream& log, const char* path);

}  // namespace orb
