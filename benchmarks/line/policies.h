#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/owned_descriptor.h"

namespace orb::bench {

/// Lets the time between two looks at the line pass.
using Pause = std::function<void()>;

/// A way to wait for a reply.
struct Policy {
  std::string name;
  /// Called for each reply that is waited for.
  std::function<Pause()> begin;
};

/// The library's own and others. The first one spins.
const std::vector<Policy>& policies();

/// Queries whose answers are waited for by a policy, on a line that stays open.
class PolicyQuery {
 public:
  explicit PolicyQuery(const std::string& tty);

  void send();
  void receive(const Pause& pause);

 private:
  OwnedDescriptor tty_;
};

}  // namespace orb::bench
