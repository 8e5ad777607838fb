#include "inventoryd/inventory_file.h"

#include <initializer_list>
#include <utility>

#include "base/toml/table_reader.h"
#include "base/toml/text_file.h"

namespace orb::inventory {
namespace {

void allowOnly(TableReader& table, std::initializer_list<std::string_view> keys) {
  for (const std::string_view key : keys) {
    table.find(key);
  }
  table.refuseUnknownKeys();
}

template <typename Integer>
bool readNumber(TableReader& table, std::string_view key, Integer& value, std::int64_t least) {
  table.require({key});
  return table.integer(key, value, least);
}

/// A text that D-Bus can carry.
std::string textAt(TableReader& table, std::string_view key) {
  std::string text;
  table.text(key, text);
  if (text.find('\0') != std::string::npos) {
    table.refuse(key, "holds a null character, which D-Bus cannot carry");
    text.clear();
  }
  return text;
}

std::string deviceNameAt(TableReader& module, std::string_view key) {
  const std::string name = textAt(module, key);
  if (name.find('/') != std::string::npos || name == "." || name == "..") {
    module.refuse(key, "is " + inQuotes(name) + "; it has to be a name below /dev, not a path");
  }
  return name;
}

std::vector<PcieBar> readBars(const toml::array& array, ProblemList& problems) {
  std::vector<PcieBar> bars;
  for (const toml::node& element : array) {
    const toml::table* table = element.as_table();
    if (table == nullptr) {
      addWrongType(element, "an element of \"bars\"", "{ index, address, size }", problems);
      continue;
    }
    TableReader reader(*table, TableName::words("the BAR"), problems);
    allowOnly(reader, {"index", "address", "size"});
    PcieBar& bar = bars.emplace_back();
    readNumber(reader, "index", bar.index, 0);
    readNumber(reader, "address", bar.address, 0);
    readNumber(reader, "size", bar.size, 1);
  }
  return bars;
}

/// A record is a text, or a table with its type and its text.
ModuleRecord readRecord(TableReader& records, const std::string& name, ProblemList& problems) {
  const toml::table* table = records.find(name)->as_table();
  if (table == nullptr) {
    return {1, textAt(records, name)};
  }
  TableReader reader(*table, TableName::words("the record " + inQuotes(name)), problems);
  allowOnly(reader, {"type", "data"});
  ModuleRecord record;
  readNumber(reader, "type", record.type, 1);
  reader.require({"data"});
  record.data = textAt(reader, "data");
  return record;
}

std::map<std::string, ModuleRecord> readRecords(const toml::node& node, ProblemList& problems) {
  std::map<std::string, ModuleRecord> records;
  const toml::table* table = node.as_table();
  if (table == nullptr) {
    addWrongType(node, "\"records\"", "a table [module.records]", problems);
    return records;
  }
  TableReader reader(*table, TableName::words("the records"), problems);
  for (const auto& [key, value] : *table) {
    const std::string name(key.str());
    if (name.find('\0') != std::string::npos) {
      problems.add(lineOf(value),
                   "a record's name holds a null character, which D-Bus cannot carry");
    }
    records.emplace(name, readRecord(reader, name, problems));
  }
  return records;
}

void readModule(const toml::table& table, Inventory& inventory, ProblemList& problems) {
  TableReader reader(table, TableName::words("the module"), problems);
  allowOnly(reader, {"location", "i2c-bus", "spi-device", "bars", "records"});
  Module module;
  module.i2cBus = deviceNameAt(reader, "i2c-bus");
  module.spiDevice = deviceNameAt(reader, "spi-device");
  if (const toml::array* bars = reader.arrayAt("bars", "an array of { index, address, size }")) {
    module.bars = readBars(*bars, problems);
  }
  if (const toml::node* records = reader.find("records")) {
    module.records = readRecords(*records, problems);
  }
  std::uint32_t location = 0;
  if (readNumber(reader, "location", location, 0) &&
      !inventory.emplace(location, std::move(module)).second) {
    problems.add(lineOf(*table.get("location")),
                 "location " + std::to_string(location) + " already has a module");
  }
}

void readModules(const toml::table& file, Inventory& inventory, ProblemList& problems) {
  TableReader reader(file, TableName::words("the file"), problems);
  allowOnly(reader, {"module"});
  const toml::node* modules = reader.find("module");
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
