#pragma once

#include <string>

namespace orb::ctl {

/// The whole terminal, from construction on; given back as it was at the end.
class Screen {
 public:
  /// Throws Failure where the terminal can do nothing of the kind.
  Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen();

  int rows() const;
  int columns() const;

  void clear();
  /// What does not fit is cut off.
  void text(int row, int column, const std::string& text);
  void show();

  /// The key that was pressed within the last tenth of a second; -1 where there was none.
  int key();

 private:
  void* terminal_ = nullptr;
};

}  // namespace orb::ctl
