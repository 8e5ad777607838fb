#pragma once

#include <elf.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace orb::sim {

/// A file open for reading at any place. Every read says whether the file had the bytes.
class ProgramBytes {
 public:
  explicit ProgramBytes(const char* path) noexcept;
  ProgramBytes(const ProgramBytes&) = delete;
  ProgramBytes& operator=(const ProgramBytes&) = delete;
  ~ProgramBytes();

  /// How many bytes were read, at most `size`; 0 where there are none.
  std::size_t read(std::uint64_t offset, void* buffer, std::size_t size) const noexcept;

  template <typename T>
  bool read(std::uint64_t offset, T& value) const noexcept {
    return read(offset, &value, sizeof value) == sizeof value;
  }

  /// Reads a text that ends with a zero byte within `kSize` bytes.
  template <std::size_t kSize>
  bool readText(std::uint64_t offset, char (&text)[kSize]) const noexcept {
    return std::memchr(text, '\0', read(offset, text, kSize)) != nullptr;
  }

 private:
  int descriptor_;
};

/// The few facts of a 64-bit ELF program that tell how it will be loaded. Reads the file piece by
/// piece into fixed room, so that a malformed file can do no more than seem to lack something.
class ElfFile {
 public:
  explicit ElfFile(const ProgramBytes& bytes) noexcept;

  /// Whether the file is a program for the machine that this code runs on.
  bool isForThisMachine() const noexcept;

  /// Whether the program asks for a dynamic loader.
  bool isDynamic() const noexcept;

  /// Whether one of the program's notes is of this owner.
  bool hasNoteOf(std::string_view owner) const noexcept;

  /// Calls `use(name)` for each library that the program needs, in the program's order.
  template <typename Use>
  void forEachLibrary(Use use) const noexcept {
    Elf64_Dyn entry;
    char name[256];
    for (unsigned i = 0; dynamicEntry(i, entry); ++i) {
      const bool isName = entry.d_tag == DT_NEEDED && texts_ != 0;
      if (isName && bytes_.readText(texts_ + entry.d_un.d_val, name)) {
        use(static_cast<const char*>(name));
      }
    }
  }

 private:
  /// Finds a segment of the type, the first from `index` on, and sets `index` to the next.
  bool segment(Elf64_Word type, Elf64_Phdr& found, unsigned& index) const noexcept;
  bool segment(Elf64_Word type, Elf64_Phdr& found) const noexcept;
  bool dynamicEntry(unsigned index, Elf64_Dyn& entry) const noexcept;
  bool fileOffset(Elf64_Addr address, std::uint64_t& offset) const noexcept;

  const ProgramBytes& bytes_;
  Elf64_Ehdr header_{};
  Elf64_Phdr dynamic_{};
  std::uint64_t texts_ = 0;  // the file offset of the dynamic section's texts
};

}  // namespace orb::sim
