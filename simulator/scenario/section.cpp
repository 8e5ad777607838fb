#include "scenario/section.h"

#include <algorithm>

namespace orb::sim {
std::string alternatives(const std::vector<std::string>& texts) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const char* const separator = i == 0 ? "" : i + 1 == texts.size() ? " or " : ", ";
    list += separator + texts[i];
  }
  return list;
}

const toml::node* Section::find(std::string_view key) {
  if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
    known_.emplace_back(key);
  }
  return table_.get(key);
}

void Section::require(std::initializer_list<std::string_view> keys) {
  for (const std::string_view key : keys) {
    if (!has(key)) {
      refuse(key, "is missing; it has to be there");
    }
  }
}

void Section::table(std::string_view key, const std::function<void(Section&)>& read) {
  if (const toml::node* node = find(key)) {
    if (const toml::table* table = node->as_table()) {
      Section section(*table, nameOf(key), problems_);
      read(section);
      section.refuseUnknownKeys();
    } else {
      addWrongType(*node, subject(key), "a table [" + nameOf(key) + "]", problems_);
    }
  }
}

void Section::eachTable(std::string_view key, const std::function<void(Section&)>& read) {
  const std::string accepted = "tables [[" + nameOf(key) + "]]";
  const toml::array* array = arrayAt(key, accepted);
  if (array == nullptr) {
    return;
  }
  for (const toml::node& node : *array) {
    if (const toml::table* table = node.as_table()) {
      Section section(*table, nameOf(key), problems_);
      read(section);
      section.refuseUnknownKeys();
    } else {
      addWrongType(node, subject(key), "one of the " + accepted, problems_);
    }
  }
}

void Section::refuse(std::string_view key, const std::string& what) {
  const toml::node* node = table_.get(key);
  problems_.add(lineOf(node != nullptr ? *node : table_), subject(key) + ' ' + what);
}

void Section::refuseUnknownKeys() {
  for (const auto& [key, node] : table_) {
    if (std::find(known_.begin(), known_.end(), key.str()) == known_.end()) {
      problems_.add(static_cast<std::uint32_t>(key.source().begin.line),
                    subject(key.str()) + " unknown key; it has to be " + alternatives(known_));
    }
  }
}

const toml::array* Section::arrayAt(std::string_view key, std::string_view accepted) {
  const toml::node* node = find(key);
  if (node == nullptr) {
    return nullptr;
  }
  const toml::array* array = node->as_array();
  if (array == nullptr) {
    addWrongType(*node, subject(key), accepted, problems_);
  }
  return array;
}

std::string Section::nameOf(std::string_view key) const {
  return path_.empty() ? std::string(key) : path_ + '.' + std::string(key);
}

}  // namespace orb::sim
