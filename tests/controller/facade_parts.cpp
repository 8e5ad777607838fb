#include "facade_parts.h"

namespace orb::test {

// An explicit instantiation may name private members, and defines these functions with them.
template <auto Controller, auto Chip>
struct FacadeParts {
  friend std::shared_ptr<ORBControlInterface>& controllerIn(orbController& facade) {
    return facade.*Controller;
  }
  friend std::shared_ptr<OrbChipEnableInterface>& chipIn(orbController& facade) {
    return facade.*Chip;
  }
};

std::shared_ptr<ORBControlInterface>& controllerIn(orbController& facade);
std::shared_ptr<OrbChipEnableInterface>& chipIn(orbController& facade);

template struct FacadeParts<&orbController::controller_, &orbController::chip_>;

std::shared_ptr<ORBControlInterface>& controllerOf(orbController& facade) {
  return controllerIn(facade);
}

std::shared_ptr<OrbChipEnableInterface>& chipOf(orbController& facade) { return chipIn(facade); }

}  // namespace orb::test
