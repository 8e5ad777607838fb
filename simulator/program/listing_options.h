#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "trace/listing.h"

namespace orb::sim {

/// Adds the options that say what is printed of what has been found, and how. In colour only on a
/// terminal.
std::shared_ptr<ListingForm> addListingOptions(CLI::App& subcommand);

}  // namespace orb::sim
