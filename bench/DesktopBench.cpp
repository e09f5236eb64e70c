// How long does it take from the start of the desktop to a table that can be worked in, how fast does the table of a
// large book scroll, and how much memory does it take?
//
//   desktop_bench             9,999 accounts by nine years of days; 14.6 million figures in four fields of one of the
//                             years
//   desktop_bench --tiny      a few, so that a benchmark which no longer works is noticed
//
// Ends in status 1 where it takes more memory than an office machine has to spare for it (kMostMemory).
//
// Needs a display: tests/tallybook/desktop/with_display runs it under one that nobody sees. The book is made first, in
// a process of its own, so that what making it takes is not measured.
#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Dates.h"
#include "platform/posix/PosixPlatform.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/window/DesktopSettings.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tallybook/engine/Book.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop {
namespace {

struct Size {
  Long accounts = 9999;
  Integer years = 9;
  int days = 365;
  Integer fields = 4;
};

void MakeBook(const Text& path, const Size& size) {
  engine::BookDescription book;
  book.system_name = "Bench";
  book.type_name = "Bench";
  book.calendar.first_date = DateFromParts(2003, 1, 1);
  book.calendar.first_year = 2003;
  book.calendar.years = book.calendar.years_in_use = size.years;
  for (Long number = 1; number <= size.accounts; ++number)
    book.accounts.push_back({number, std::to_string(10'000 + number), "Account"});
  for (Integer number = 1; number <= size.fields; ++number)
    book.fields.push_back({number, "Field " + std::to_string(number), false});
  engine::Book::Create(path, book);
  application::ReferenceApp app;
  const auto opened = engine::Book::Open(path, app);
  opened->BeginProgress("bench");
  const Date first = DateFromParts(2003 + size.years - 1, 1, 1);
  for (int day = 0; day < size.days; ++day) {
    for (Long account = 1; account <= size.accounts; ++account) {
      if (!opened->ReadRecord(account, first + day)) std::abort();
      for (Integer field = 1; field <= size.fields; ++field)
        opened->SetFieldValue(field, (account * 31 + day * 7 + field) % 9973 / 4.0 + 1);
      if (!opened->WriteRecord()) std::abort();
    }
  }
  opened->EndProgress();
  opened->Close();
}

// In MiB.
double PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
  }
  return 0;
}

constexpr double kMostMemory = 400;  // MiB

double Milliseconds(std::chrono::steady_clock::time_point from) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - from).count();
}

// Steps a second, each drawn at once.
double ScrollSpeed(FigureGrid& grid, QScrollBar& bar, int steps) {
  const auto begin = std::chrono::steady_clock::now();
  for (int step = 0; step < steps; ++step) {
    bar.setValue((bar.value() + bar.pageStep() * 7) % std::max(bar.maximum(), 1));
    grid.viewport()->repaint();
  }
  return steps / (Milliseconds(begin) / 1000);
}

int Measure(int argc, char** argv, const Text& folder, bool tiny) {
  const auto begin = std::chrono::steady_clock::now();
  QApplication application(argc, argv);
  InstallPlatform(PosixPlatform("Tallybook"));
  application::ReferenceApp app;
  DesktopSettings settings(folder + "/books.ini");
  MainWindow window(app, settings, SystemStyle());
  window.show();
  if (!window.OpenBook(folder + "/bench.tbk")) return 1;
  window.Figures().Grid().viewport()->repaint();
  QApplication::processEvents();
  std::printf("start to a table of the book   %8.0f ms\n", Milliseconds(begin));
  FigureChoice choice = window.Figures().Table().Choice();
  choice.view = FigureView::kField;
  choice.stretch = engine::kAllYearsLevel;
  const auto change = std::chrono::steady_clock::now();
  window.Figures().Choose(choice);
  window.Figures().Grid().viewport()->repaint();
  std::printf("all accounts by all dates      %8.0f ms\n", Milliseconds(change));
  FigureGrid& grid = window.Figures().Grid();
  const int steps = tiny ? 5 : 200;
  std::printf("pages down, a second           %8.0f\n", ScrollSpeed(grid, *grid.verticalScrollBar(), steps));
  std::printf("pages right, a second          %8.0f\n", ScrollSpeed(grid, *grid.horizontalScrollBar(), steps));
  QElapsedTimer longest;
  double worst = 0;
  const auto totals = std::chrono::steady_clock::now();
  const auto is_done = [&] { return window.Figures().TotalsAreDone(); };
  while (!is_done() && Milliseconds(totals) < 60'000) {
    longest.start();
    QApplication::processEvents();
    worst = std::max(worst, static_cast<double>(longest.nsecsElapsed()) / 1e6);
  }
  std::printf("totals of all of it            %8.0f ms, the window away for %.0f ms at most\n", Milliseconds(totals),
              worst);
  const double memory = PeakMemory();
  std::printf("largest resident set           %8.0f MiB\n", memory);
  return is_done() && memory > 0 && memory < kMostMemory ? 0 : 1;
}

}  // namespace
}  // namespace tallybook::desktop

int main(int argc, char** argv) {
  using namespace tallybook;
  const bool tiny = argc > 1 && std::strcmp(argv[1], "--tiny") == 0;
  const testing::TempFolder folder;
  const pid_t child = ::fork();
  if (child == 0) {
    InstallPlatform(PosixPlatform("Tallybook"));
    desktop::MakeBook(folder.Path("bench.tbk"), tiny ? desktop::Size{20, 1, 10, 2} : desktop::Size());
    ::_exit(0);
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0) return 1;
  return desktop::Measure(argc, argv, folder.Path(), tiny);
}
