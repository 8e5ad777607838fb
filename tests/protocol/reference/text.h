#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orb::reference {

using Bytes = std::vector<unsigned char>;

/// The lines of a file in this folder without those that begin with "#". Throws
/// std::runtime_error when the file cannot be read.
std::vector<std::string> dataLines(const std::string& fileName);

/// The parts of `text` between separators; there is one more part than separators.
std::vector<std::string> split(const std::string& text, char separator);

/// The whole of `text` as a number. Throws std::runtime_error when it is none.
unsigned long numberIn(const std::string& text, int base);

/// Upper-case hexadecimal digits, two a byte.
std::string hexText(const unsigned char* data, std::size_t size);
std::string hexText(unsigned short number);

/// The bytes that vector_file.py wrote: hexadecimal digits, "(5A*1000)" for a run, "-" for none.
Bytes bytesIn(const std::string& text);

}  // namespace orb::reference
