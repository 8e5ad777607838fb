#pragma once

namespace orb {

/// The descriptor on which the worker is asked; the first after its standard ones.
constexpr int kWorkerSocket = 3;

}  // namespace orb
