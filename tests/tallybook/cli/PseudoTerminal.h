// A terminal for a test: while it lives, standard input and standard error are its own. What the user types is given
// beforehand; a program that asks for more gets empty lines, and then the end of the input.
//
//   PseudoTerminal terminal("north.csv\n");
//   ... whatever asks ...
//   EXPECT_EQ(terminal.End(), "File name [Cancel]? ");
//
// POSIX. One at a time.
#pragma once

#include <array>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include "base/Types.h"

namespace tallybook::testing {

class PseudoTerminal {
 public:
  explicit PseudoTerminal(const Text& typed = "") {
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) throw std::runtime_error("no terminal");
    const int slave = ::open(::ptsname(master_), O_RDWR | O_NOCTTY);
    termios modes{};
    if (slave < 0 || ::tcgetattr(slave, &modes) != 0) throw std::runtime_error("no terminal's other end");
    // What was typed is not shown again, and line ends stay as they are written.
    modes.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    modes.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    ::tcsetattr(slave, TCSANOW, &modes);
    std::cerr << std::flush;
    for (std::size_t i = 0; i < kTaken.size(); ++i) {
      before_[i] = ::dup(kTaken[i]);
      ::dup2(slave, kTaken[i]);
    }
    ::close(slave);
    const Text input = typed + "\n\n\n\x04";
    if (::write(master_, input.data(), input.size()) != static_cast<ssize_t>(input.size()))
      throw std::runtime_error("nothing can be typed");
  }
  ~PseudoTerminal() {
    Restore();
    ::close(master_);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Takes the terminal away and gives all that it showed.
  [[nodiscard]] Text End() {
    Restore();
    Text shown;
    std::array<char, 4096> block{};
    for (ssize_t count = 0; (count = ::read(master_, block.data(), block.size())) > 0;)
      shown.append(block.data(), static_cast<std::size_t>(count));
    return shown;
  }

 private:
  static constexpr std::array<int, 2> kTaken = {STDIN_FILENO, STDERR_FILENO};

  void Restore() {
    std::cerr << std::flush;
    for (std::size_t i = 0; i < kTaken.size(); ++i) {
      if (before_[i] < 0) continue;
      ::dup2(before_[i], kTaken[i]);
      ::close(before_[i]);
      before_[i] = -1;
    }
  }

  int master_ = -1;
  std::array<int, 2> before_ = {-1, -1};
};

}  // namespace tallybook::testing
