#include "reference/vector_file.h"

#include <stdexcept>

namespace orb::reference {
namespace {

ExplicitVector::ListedMessage listedMessage(const std::string& text) {
  const auto fields = split(text, ':');
  if (fields.size() != 3) {
    throw std::runtime_error("explicit_vectors.tsv: not a message: " + text);
  }
  return {static_cast<unsigned short>(numberIn(fields[0], 16)), numberIn(fields[1], 10),
          bytesIn(fields[2])};
}

ExplicitVector vectorIn(const std::string& line) {
  const auto fields = split(line, '\t');
  if (fields.size() != 5) {
    throw std::runtime_error("explicit_vectors.tsv: not a vector: " + line);
  }
  ExplicitVector vector{fields[0], fields[1], {}, split(fields[3], ';'), {}};
  for (const auto& text : split(fields[2], ';')) {
    vector.buffers.push_back(bytesIn(text));
  }
  if (fields[4] != "-") {
    for (const auto& text : split(fields[4], ' ')) {
      vector.messages.push_back(listedMessage(text));
    }
  }
  if (vector.buffers.size() != vector.results.size()) {
    throw std::runtime_error("explicit_vectors.tsv: results missing: " + line);
  }
  return vector;
}

}  // namespace

std::vector<ExplicitVector> explicitVectors() {
  std::vector<ExplicitVector> vectors;
  for (const auto& line : dataLines("explicit_vectors.tsv")) {
    vectors.push_back(vectorIn(line));
  }
  return vectors;
}

}  // namespace orb::reference
