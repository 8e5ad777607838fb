#include "reference/explicit_vectors.h"

#include <sstream>

#include "reference/catalogue_file.h"

namespace orb::test {
namespace {

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

/// Without the short forms for a run of one byte, "(5A*1000)", and for no bytes at all, "-".
std::string expanded(std::string text) {
  for (auto open = text.find('('); open != std::string::npos; open = text.find('(', open)) {
    const auto close = text.find(')', open);
    std::string run;
    for (int count = std::stoi(text.substr(open + 4)); count > 0; --count) {
      run += text.substr(open + 1, 2);
    }
    text.replace(open, close + 1 - open, run);
  }
  return text == "-" ? "" : text;
}

ExplicitVector vectorIn(const std::vector<std::string>& fields) {
  ExplicitVector vector{
      fields.at(1), {}, split(fields.at(3), ';'), split(expanded(fields.at(4)), ' ')};
  for (const std::string& buffer : split(fields.at(2), ';')) {
    vector.buffers.push_back(hex(expanded(buffer)));
  }
  return vector;
}

}  // namespace

const std::map<std::string, std::vector<ExplicitVector>>& explicitVectors() {
  static const auto groups = [] {
    std::map<std::string, std::vector<ExplicitVector>> read;
    std::ifstream table = openTable("explicit_vectors.tsv");
    for (std::string line; std::getline(table, line);) {
      const auto fields = split(line, '\t');
      read[fields.at(0)].push_back(vectorIn(fields));
    }
    return read;
  }();
  return groups;
}

}  // namespace orb::test
