#pragma once

#include <memory>
#include <string>

#include "orb-gnss/controller.h"
#include "orb-gnss/module_driver.h"

namespace orb {

/// What operations are called on; each is made when it is first needed.
class Receiver {
 public:
  /// Looks for module and receiver when it is made, and throws what the platform classes throw.
  orbController& facade() {
    if (!facade_) {
      facade_ = std::make_unique<orbController>();
    }
    return *facade_;
  }

  orbController_QN4470T01& driver() {
    if (!driver_) {
      driver_ = std::make_unique<orbController_QN4470T01>();
    }
    return *driver_;
  }

  /// Sends `payload` (id, sub-id where there is one, and body) and puts into `replies` each packet
  /// that comes within two seconds, its length in two bytes before it; a reply that is neither an
  /// acknowledgement nor navigation data ends the wait. Returns 0, 4 where none comes, or 8 where
  /// it could not be sent.
  unsigned int exchangeRaw(std::string payload, std::string& replies);

 private:
  std::unique_ptr<orbController> facade_;
  std::unique_ptr<orbController_QN4470T01> driver_;
};

}  // namespace orb
