#pragma once

#include <filesystem>

namespace orb::sim {

/// The library that makes a program see the simulated device. Throws Failure where it is missing.
std::filesystem::path preloadLibrary();

/// The inventory service. Throws Failure where it is missing.
std::filesystem::path inventoryService();

/// The folder of the ready scenarios. Throws Failure where it is missing.
std::filesystem::path scenarioFolder();

/// A page of the documentation, which need not be installed.
std::filesystem::path documentation(const char* page);

/// The D-Bus daemon, as PATH has it. Throws Failure where there is none.
std::filesystem::path busDaemon();

}  // namespace orb::sim
