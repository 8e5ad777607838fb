#pragma once

#include <cstdint>

/// One base address register of a module's PCIe endpoint: the memory window that it opens.
struct PcieBar {
  std::uint32_t index = 0;    ///< number of the register
  std::uint64_t address = 0;  ///< physical address of the window's first byte
  std::uint64_t size = 0;     ///< length of the window in bytes
};
