#include "inventoryd/inventory_file.h"

#include <limits>
#include <utility>

#include "base/toml/text_file.h"
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
    addWrongType(node, "\"bars\"", "an array of { index, address, size }", problems);
    return bars;
  }
  for (const toml::node& element : *array) {
    const toml::table* table = element.as_table();
    if (table == nullptr) {
      addWrongType(element, "an element of \"bars\"", "{ index, address, size }", problems);
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
    return {1, busTextOf(node, inQuotes(name), problems).value_or("")};
  }
  const std::string what = "the record " + inQuotes(name);
  const TomlFields fields(*table, what, problems);
  fields.allowOnly({"type", "data"});
  return {static_cast<std::int32_t>(fields.number("type", 1, kMaxInt32).value_or(1)),
          fields.text("data").value_or("")};
}

std::map<std::string, ModuleRecord> readRecords(const toml::node& node, ProblemList& problems) {
  std::map<std::string, ModuleRecord> records;
  const toml::table* table = node.as_table();
  if (table == nullptr) {
    addWrongType(node, "\"records\"", "a table [module.records]", problems);
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

void readInventory(std::string_view text, Inventory& inventory, ProblemList& problems) {
  if (const auto file = parseToml(text, problems)) {
    readModules(*file, inventory, problems);
  }
}

}  // namespace

InventoryFile parseInventory(std::string_view text, const std::string& path) {
  Inventory inventory;
  ProblemList problems(path);
  readInventory(text, inventory, problems);
  return {std::move(inventory), problems.lines()};
}

InventoryFile readInventoryFile(const std::string& path) {
  Inventory inventory;
  ProblemList problems(path);
  if (const auto text = readTextFile(path, problems)) {
    readInventory(*text, inventory, problems);
  }
  return {std::move(inventory), problems.lines()};
}

}  // namespace orb::inventory
