#pragma once

#include <string>

#include "orb-gnss/export.h"

/// What the board can do for the receiver chip. One thread at a time uses an object.
class ORB_GNSS_EXPORT OrbChipEnableInterface {
 public:
  virtual ~OrbChipEnableInterface();

  /// Resets the chip. Returns 0.
  virtual int resetOrbChip() = 0;

  /// Switches the antenna's supply: "ON" or "OFF", in any case. Returns 1 for another word, where
  /// the board can be reached; else 0.
  virtual int antennaPowerEnable(std::string state) = 0;
};

/// The carrier board, whose port expander switches the antenna's supply.
class ORB_GNSS_EXPORT BrdOrbChipInterface : public OrbChipEnableInterface {
 public:
  ~BrdOrbChipInterface() override;

  /// The board has no reset line: prints "reset skipp!" to standard output and returns 0.
  int resetOrbChip() override;

  /// Makes the supply's pin an output, for any `state`, and drives it for "ON" and "OFF". Other
  /// pins keep their state, unless the expander takes a write after it has failed a read: then they
  /// become outputs that are off. Returns 1 for another word, where the bus can be opened; else 0,
  /// also where the bus cannot be opened or the expander does not answer. What the platform classes
  /// throw is passed on.
  int antennaPowerEnable(std::string state) override;
};

/// A system without carrier board: both operations do nothing and return 0.
class ORB_GNSS_EXPORT NullChipInterface : public OrbChipEnableInterface {
 public:
  ~NullChipInterface() override;
  int resetOrbChip() override;
  int antennaPowerEnable(std::string state) override;
};
