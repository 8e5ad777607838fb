#include "line/stable_link.h"

#include <system_error>
#include <utility>

namespace orb::sim {

namespace fs = std::filesystem;

StableLink::StableLink(fs::path link, const fs::path& target) : link_(std::move(link)) {
  pointTo(target);
}

void StableLink::pointTo(const fs::path& target) {
  if (link_.empty()) {
    return;
  }
  const fs::file_status there = fs::symlink_status(link_);
  if (fs::exists(there) && !fs::is_symlink(there)) {
    throw fs::filesystem_error("in the way of a link", link_,
                               std::make_error_code(std::errc::file_exists));
  }
  // Made beside its place and moved there, so that the link is never missing.
  fs::path made = link_;
  made += "." + target.filename().string() + ".new";
  std::error_code error;
  fs::remove(made, error);
  fs::create_symlink(target, made, error);
  if (!error) {
    fs::rename(made, link_, error);
  }
  if (error) {
    throw std::system_error(error, "cannot make " + link_.string());
  }
  target_ = target;
}

StableLink::~StableLink() {
  std::error_code ignored;
  if (!link_.empty() && fs::read_symlink(link_, ignored) == target_) {
    fs::remove(link_, ignored);
  }
}

}  // namespace orb::sim
