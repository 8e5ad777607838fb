#include "reference/catalogue_file.h"

#include <sstream>
#include <stdexcept>

namespace orb::test {
namespace {

// "\x20" stands for a byte, here a blank.
std::string unescaped(const std::string& text) {
  std::string bytes;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (text.compare(place, 2, "\\x") == 0) {
      bytes += static_cast<char>(std::stoi(text.substr(place + 2, 2), nullptr, 16));
      place += 3;
    } else {
      bytes += text[place];
    }
  }
  return bytes;
}

std::vector<CatalogueRow> readRows() {
  std::vector<CatalogueRow> rows;
  std::ifstream table = openTable("catalogue.tsv");
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::size_t number = 0;
    unsigned id = 0;
    unsigned subId = 0;
    CatalogueRow row{};
    fields >> number >> std::hex >> id >> subId >> std::dec >> row.minLength >> row.maxLength;
    fields.ignore();  // the tab before the description, which may begin with a blank
    std::getline(fields, row.description);
    if (!fields || number != rows.size()) {
      throw std::runtime_error("catalogue.tsv: not the row expected: " + line);
    }
    row.id = static_cast<unsigned char>(id);
    row.subId = static_cast<unsigned char>(subId);
    row.description = unescaped(row.description);
    rows.push_back(row);
  }
  return rows;
}

}  // namespace

const std::vector<CatalogueRow>& catalogueRows() {
  static const std::vector<CatalogueRow> rows = readRows();
  return rows;
}

std::ifstream openTable(const std::string& name) {
  std::ifstream table(ORB_REFERENCE_FOLDER "/" + name, std::ios::binary);
  std::string columns;
  if (!std::getline(table, columns) || !columns.starts_with('#')) {
    throw std::runtime_error(name + ": no table");
  }
  return table;
}

}  // namespace orb::test
