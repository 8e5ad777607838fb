#include "orbctl/screen.h"

#include <curses.h>

#include <cstdio>

#include "orbctl/failure.h"

namespace orb::ctl {
namespace {

constexpr int kTenthOfSecond = 100;

SCREEN* terminalOf(void* pointer) { return static_cast<SCREEN*>(pointer); }

}  // namespace

Screen::Screen() : terminal_(newterm(nullptr, stdout, stdin)) {
  if (terminal_ == nullptr) {
    throw Failure(ExitStatus::WrongUse, "this terminal cannot show a full screen",
                  "is TERM set? For scripts: orbctl --json status");
  }
  cbreak();
  noecho();
  curs_set(0);
  keypad(stdscr, TRUE);
  timeout(kTenthOfSecond);
}

Screen::~Screen() {
  endwin();
  delscreen(terminalOf(terminal_));
}

int Screen::rows() const { return LINES; }
int Screen::columns() const { return COLS; }

void Screen::clear() { erase(); }

void Screen::text(int row, int column, const std::string& text) {
  if (row >= 0 && row < LINES && column >= 0 && column < COLS) {
    mvaddnstr(row, column, text.c_str(), COLS - column);
  }
}

void Screen::show() { refresh(); }

int Screen::key() { return getch(); }

}  // namespace orb::ctl
