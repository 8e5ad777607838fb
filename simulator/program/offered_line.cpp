#include "program/offered_line.h"

#include <iostream>

#include "base/shell_word.h"
#include "line/pty_port.h"
#include "program/command_line.h"
#include "program/failure.h"

namespace orb::sim {

namespace fs = std::filesystem;

namespace {

/// What keeps a link from being made; empty for nothing.
std::string obstacle(const std::string& text) {
  const fs::path link = fs::absolute(text);
  std::error_code ignored;
  if (!fs::is_directory(link.parent_path(), ignored)) {
    return "there is no folder " + link.parent_path().string();
  }
  const fs::file_status there = fs::symlink_status(link, ignored);
  const bool isInTheWay = fs::exists(there) && !fs::is_symlink(there);
  return isInTheWay ? text + " is there already, and no symbolic link" : "";
}

}  // namespace

CLI::Option* addLinkOption(CLI::App& subcommand, fs::path& link) {
  return addPath(subcommand, "--link", "PATH", link,
                 "Where clients find the line: a symbolic link, which replaces one that a\n"
                 "killed orb-sim has left, and goes at the end")
      ->check(obstacle);
}

void requireFreeLink(const fs::path& link) {
  std::error_code ignored;
  const fs::path target = fs::read_symlink(link, ignored);
  if (!fs::exists(link, ignored)) {
    return;
  }
  // An orb-sim that was killed has left its link; any process may have got its tty's number since.
  if (target.parent_path() == "/dev/pts" && !PtyPort::isOffered(target, link)) {
    return;
  }
  throw Failure("--link: " + link.string() + " points to " + target.string() +
                " already; end the orb-sim that offers it, or: rm " + shellWord(link.string()));
}

void announceLine(const fs::path& link, const std::string& tty) {
  const std::string place = shellWord(fs::absolute(link).lexically_normal());
  std::cerr << "orb-sim: the line is at " << place << ", which now points to " << tty << '\n'
            << "orb-sim: for one program, without any rights: orb-sim run --tty " << place
            << " -- COMMAND\n"
            << "orb-sim: for all of your programs, once, as root: ln -s " << place
            << " /dev/tty_gps\n"
            << "orb-sim: other users' programs need rights to read and write " << tty << '\n';
}

}  // namespace orb::sim
