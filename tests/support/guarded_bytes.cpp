#include "support/guarded_bytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace orb::test {

GuardedBytes::GuardedBytes(const Bytes& bytes) : size_(bytes.size()) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t usable = (size_ / page + 1) * page;
  mappedSize_ = usable + page;
  mapping_ = mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping_ == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "mmap");
  }
  unsigned char* const guard = static_cast<unsigned char*>(mapping_) + usable;
  if (mprotect(guard, page, PROT_NONE) != 0) {
    const int error = errno;
    munmap(mapping_, mappedSize_);
    throw std::system_error(error, std::generic_category(), "mprotect");
  }
  data_ = guard - size_;
  std::copy(bytes.begin(), bytes.end(), data_);
}

GuardedBytes::~GuardedBytes() { munmap(mapping_, mappedSize_); }

}  // namespace orb::test
