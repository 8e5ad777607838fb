#include "interpose/elf_file.h"

#include <fcntl.h>
#include <unistd.h>

// The start of the program or library that this file is part of, set by the linker.
extern "C" const Elf64_Ehdr __ehdr_start __attribute__((visibility("hidden")));

namespace orb::sim {

ProgramBytes::ProgramBytes(const char* path) noexcept
    : descriptor_(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

ProgramBytes::~ProgramBytes() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

std::size_t ProgramBytes::read(std::uint64_t offset, void* buffer,
                               std::size_t size) const noexcept {
  const ssize_t count = pread(descriptor_, buffer, size, static_cast<off_t>(offset));
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

ElfFile::ElfFile(const ProgramBytes& bytes) noexcept : bytes_(bytes) {
  // A truncated header counts as none.
  if (!bytes_.read(0, header_)) {
    header_ = {};
  }
  if (!isForThisMachine() || !segment(PT_DYNAMIC, dynamic_)) {
    return;
  }
  Elf64_Dyn entry;
  for (unsigned i = 0; dynamicEntry(i, entry); ++i) {
    if (entry.d_tag == DT_STRTAB && !fileOffset(entry.d_un.d_ptr, texts_)) {
      texts_ = 0;
    }
  }
}

bool ElfFile::isForThisMachine() const noexcept {
  return std::memcmp(header_.e_ident, __ehdr_start.e_ident, EI_VERSION) == 0 &&
         header_.e_machine == __ehdr_start.e_machine && header_.e_phentsize == sizeof(Elf64_Phdr);
}

bool ElfFile::isDynamic() const noexcept {
  Elf64_Phdr loader;
  return segment(PT_INTERP, loader);
}

bool ElfFile::hasNoteOf(std::string_view owner) const noexcept {
  Elf64_Phdr notes;
  for (unsigned i = 0; segment(PT_NOTE, notes, i);) {
    Elf64_Nhdr note;
    char name[32];
    const auto padded = [&](std::uint64_t size) {
      const std::uint64_t unit = notes.p_align == 8 ? 8 : 4;
      return (size + unit - 1) / unit * unit;
    };
    for (std::uint64_t at = 0; at < notes.p_filesz && bytes_.read(notes.p_offset + at, note);
         at += sizeof note + padded(note.n_namesz) + padded(note.n_descsz)) {
      if (bytes_.readText(notes.p_offset + at + sizeof note, name) && name == owner) {
        return true;
      }
    }
  }
  return false;
}

bool ElfFile::segment(Elf64_Word type, Elf64_Phdr& found, unsigned& index) const noexcept {
  while (index < header_.e_phnum) {
    if (!bytes_.read(header_.e_phoff + index++ * sizeof found, found)) {
      return false;
    }
    if (found.p_type == type) {
      return true;
    }
  }
  return false;
}

bool ElfFile::segment(Elf64_Word type, Elf64_Phdr& found) const noexcept {
  unsigned index = 0;
  return segment(type, found, index);
}

bool ElfFile::fileOffset(Elf64_Addr address, std::uint64_t& offset) const noexcept {
  Elf64_Phdr loaded;
  for (unsigned i = 0; segment(PT_LOAD, loaded, i);) {
    if (address >= loaded.p_vaddr && address - loaded.p_vaddr < loaded.p_filesz) {
      offset = address - loaded.p_vaddr + loaded.p_offset;
      return true;
    }
  }
  return false;
}

bool ElfFile::dynamicEntry(unsigned index, Elf64_Dyn& entry) const noexcept {
  return index < dynamic_.p_filesz / sizeof entry &&
         bytes_.read(dynamic_.p_offset + index * sizeof entry, entry) && entry.d_tag != DT_NULL;
}

}  // namespace orb::sim
