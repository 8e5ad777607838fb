#pragma once

#include <memory>
#include <vector>

#include "orb-platform/export.h"

/// Asks the system inventory service which module locations are populated.
///
/// An object is used from one thread at a time.
class ORB_PLATFORM_EXPORT GDBusSystemInventoryClient {
 public:
  /// Never fails: the connection to the system bus is made by the first call that needs it.
  GDBusSystemInventoryClient();

  /// Closes the connection.
  ~GDBusSystemInventoryClient();

  GDBusSystemInventoryClient(const GDBusSystemInventoryClient&) = delete;
  GDBusSystemInventoryClient& operator=(const GDBusSystemInventoryClient&) = delete;

  /// One number per populated location, in ascending order.
  ///
  /// Empty when the service cannot be reached or has not answered after 2 seconds, which also puts
  /// one line on standard error.
  std::vector<unsigned int> GetModuleLocations();

 private:
  struct Impl;
  // Shared, not unique: a library or a test that defines the members above need not define Impl.
  [[maybe_unused]] std::shared_ptr<Impl> impl_;
};
