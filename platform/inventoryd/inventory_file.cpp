#include "inventoryd/inventory_file.h"

#include <cerrno>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>

#include "inventoryd/toml_fields.h"

namespace orb::inventory {
namespace {

constexpr std::int64_t kMaxUint32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kMaxInt32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMaxInt64 = std::numeric_limits<std::int64_t>::max();

std::vector<PcieBar> readBars(const toml::node& node, ProblemList& problems) {
  std::vector<PcieBar> bars;
  const toml::array* array = node.as_array();
  if (array == nullptr) {
    problems.add(lineOf(node), "\"bars\" is " + std::string(typeName(node)) +
                                   "; it has to be an array of { index, address, size }");
    return bars;
  }
  for (const toml::node& element : *array) {
    const toml::table* table = element.as_table();
    if (table == nullptr) {
      problems.add(lineOf(element), "an element of \"bars\" is " + std::string(typeName(element)) +
                                        "; it has to be { index, address, size }");
      continue;
    }
    const TomlFields fields(*table, "the BAR", problems);
    fields.allowOnly({"index", "address", "size"});
    bars.push_back({static_cast<std::uint32_t>(fields.number("index", 0, kMaxUint32).value_or(0)),
                    static_cast<std::uint64_t>(fields.number("address", 0, kMaxInt64).value_or(0)),
                    static_cast<std::uint64_t>(fields.number("size", 1, kMaxInt64).value_or(0))});
  }
  return bars;
}

ModuleRecord readRecord(const toml::node& node, std::string_view name, ProblemList& problems) {
  const toml::table* table = node.as_table();
  if (table == nullptr) {
    return {1, textOf(node, name, problems).value_or("")};
  }
  const std::string what = "the record " + quoted(name);
  const TomlFields fields(*table, what, problems);
  fields.allowOnly({"type", "data"});
  return {static_cast<std::int32_t>(fields.number("type", 1, kMaxInt32).value_or(1)),
          fields.text("data").value_or("")};
}

std::map<std::string, ModuleRecord> readRecords(const toml::node& node, ProblemList& problems) {
  std::map<std::string, ModuleRecord> records;
  const toml::table* table = node.as_table();
  if (table == nullptr) {
    problems.add(lineOf(node), "\"records\" is " + std::string(typeName(node)) +
                                   "; it has to be a table [module.records]");
    return records;
  }
  for (const auto& [key, value] : *table) {
    const std::string name(key.str());
    if (name.find('\0') != std::string::npos) {
      problems.add(lineOf(value),
                   "a record's name holds a null character, which D-Bus cannot carry");
    }
    records.emplace(name, readRecord(value, name, problems));
  }
  return records;
}

void readModule(const toml::table& table, Inventory& inventory, ProblemList& problems) {
  const TomlFields fields(table, "the module", problems);
  fields.allowOnly({"location", "i2c-bus", "spi-device", "bars", "records"});
  Module module;
  module.i2cBus = fields.deviceName("i2c-bus");
  module.spiDevice = fields.deviceName("spi-device");
  if (fields.has("bars")) {
    module.bars = readBars(*table.get("bars"), problems);
  }
  if (fields.has("records")) {
    module.records = readRecords(*table.get("records"), problems);
  }
  const auto location = fields.number("location", 0, kMaxUint32);
  if (location &&
      !inventory.emplace(static_cast<std::uint32_t>(*location), std::move(module)).second) {
    problems.add(lineOf(*table.get("location")),
                 "location " + std::to_string(*location) + " already has a module");
  }
}

void readModules(const toml::table& file, Inventory& inventory, ProblemList& problems) {
  TomlFields(file, "the file", problems).allowOnly({"module"});
  const toml::node* modules = file.get("module");
  if (modules == nullptr) {
    return;
  }
  const toml::array* array = modules->as_array();
  if (array == nullptr || !(array->empty() || array->is_array_of_tables())) {
    problems.add(lineOf(*modules), "each module has to stand under a heading [[module]]");
    return;
  }
  for (const toml::node& module : *array) {
    readModule(*module.as_table(), inventory, problems);
  }
}

}  // namespace

InventoryFile parseInventory(std::string_view text, const std::string& path) {
  InventoryFile result;
  ProblemList problems(path);
  try {
    readModules(toml::parse(text, path), result.inventory, problems);
  } catch (const toml::parse_error& error) {
    problems.add(static_cast<std::uint32_t>(error.source().begin.line),
                 std::string(error.description()));
  }
  result.problems = problems.lines();
  return result;
}

InventoryFile readInventoryFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) {
    text << file.rdbuf();
  }
  if (!file.is_open() || file.bad()) {
    const std::string reason = std::generic_category().message(errno);
    return {{}, {path + ": cannot read it: " + reason}};
  }
  return parseInventory(text.str(), path);
}

}  // namespace orb::inventory
