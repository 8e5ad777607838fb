#include "reference/catalogue_file.h"

#include <stdexcept>

#include "reference/text.h"

namespace orb::reference {
namespace {

std::string unescaped(const std::string& text) {
  std::string bytes;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (text.compare(place, 2, "\\x") == 0) {
      bytes += static_cast<char>(numberIn(text.substr(place + 2, 2), 16));
      place += 3;
    } else {
      bytes += text[place];
    }
  }
  return bytes;
}

std::vector<CatalogueRow> readRows() {
  std::vector<CatalogueRow> rows;
  for (const auto& line : dataLines("catalogue.tsv")) {
    const auto fields = split(line, '\t');
    if (fields.size() != 6 || numberIn(fields[0], 10) != rows.size()) {
      throw std::runtime_error("catalogue.tsv: not the row expected: " + line);
    }
    rows.push_back({static_cast<unsigned char>(numberIn(fields[1], 16)),
                    static_cast<unsigned char>(numberIn(fields[2], 16)),
                    static_cast<unsigned short>(numberIn(fields[3], 10)),
                    static_cast<unsigned short>(numberIn(fields[4], 10)), unescaped(fields[5])});
  }
  return rows;
}

}  // namespace

const std::vector<CatalogueRow>& catalogueRows() {
  static const std::vector<CatalogueRow> rows = readRows();
  return rows;
}

bool hasSubId(unsigned char id) { return id >= 0x62 && id <= 0x6F; }

}  // namespace orb::reference
