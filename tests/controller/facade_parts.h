#pragma once

#include <memory>

#include "orb-gnss/controller.h"

namespace orb::test {

// What a facade holds. It hands out neither, so that its clients depend on neither.

std::shared_ptr<ORBControlInterface>& controllerOf(orbController& facade);
std::shared_ptr<OrbChipEnableInterface>& chipOf(orbController& facade);

}  // namespace orb::test
