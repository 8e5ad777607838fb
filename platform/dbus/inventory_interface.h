#pragma once

/// The names of the inventory service on the bus, shared by the service and its clients.
/// org.orb_gnss.Inventory1.xml describes the interface.
namespace orb::inventory {

inline constexpr char kBusName[] = "org.orb_gnss.Inventory1";
inline constexpr char kObjectPath[] = "/org/orb_gnss/Inventory1";
inline constexpr char kInterface[] = "org.orb_gnss.Inventory1";

inline constexpr char kGetModuleLocations[] = "GetModuleLocations";
inline constexpr char kGetSystemRecord[] = "GetSystemRecord";
inline constexpr char kGetBars[] = "GetBars";
inline constexpr char kGetI2CBus[] = "GetI2CBus";
inline constexpr char kGetSPIDevice[] = "GetSPIDevice";

/// The answer of a module's methods for a location that holds no module.
inline constexpr char kNoSuchModule[] = "org.orb_gnss.Inventory1.Error.NoSuchModule";

}  // namespace orb::inventory
