#include "reference/text.h"

#include <fstream>
#include <stdexcept>

namespace orb::reference {

std::vector<std::string> dataLines(const std::string& fileName) {
  std::ifstream file(std::string(ORB_REFERENCE_FOLDER "/") + fileName, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('#')) {
      lines.push_back(line);
    }
  }
  if (lines.empty()) {
    throw std::runtime_error(fileName + ": missing or empty");
  }
  return lines;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (auto end = text.find(separator); end != std::string::npos;
       end = text.find(separator, start)) {
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

unsigned long numberIn(const std::string& text, int base) {
  std::size_t used = 0;
  unsigned long number = 0;
  try {
    number = std::stoul(text, &used, base);
  } catch (const std::logic_error&) {
    used = 0;
  }
  if (used == 0 || used != text.size()) {
    throw std::runtime_error("not a number: " + text);
  }
  return number;
}

std::string hexText(const unsigned char* data, std::size_t size) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(2 * size);
  for (std::size_t k = 0; k < size; ++k) {
    text += kDigits[data[k] >> 4];
    text += kDigits[data[k] & 0xF];
  }
  return text;
}

std::string hexText(unsigned short number) {
  const unsigned char bytes[] = {static_cast<unsigned char>(number >> 8),
                                 static_cast<unsigned char>(number & 0xFF)};
  return hexText(bytes, sizeof bytes);
}

Bytes bytesIn(const std::string& text) {
  Bytes bytes;
  if (text == "-") {
    return bytes;
  }
  const auto byteAt = [&](std::size_t place) {
    return static_cast<unsigned char>(numberIn(text.substr(place, 2), 16));
  };
  for (std::size_t place = 0; place < text.size();) {
    if (text[place] == '(') {
      const auto end = text.find(')', place);
      const auto count = numberIn(text.substr(place + 4, end - place - 4), 10);
      bytes.insert(bytes.end(), count, byteAt(place + 1));
      place = end + 1;
    } else {
      bytes.push_back(byteAt(place));
      place += 2;
    }
  }
  return bytes;
}

}  // namespace orb::reference
