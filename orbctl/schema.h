#pragma once

#include "orbctl/settings.h"

namespace orb::ctl {

/// The JSON schema of what --json prints: a shape for each command, and one for a failure.
Json jsonSchema();

}  // namespace orb::ctl
