// The platform of the desktop: windows and input on Qt, files as on any POSIX system with outputs that are written
// whole, and a clock that can be fixed for what is written into files. Installed while the object lives. One thread;
// needs an application object.
//
//   QApplication application(argc, argv);
//   QtPlatform platform;
//   DesktopApp app;
//   DesktopFactory factory(platform.Handles(), platform.Progress());
#pragma once

#include <memory>

#include "base/Types.h"
#include "platform/StopProgram.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/desktop/host/ProgressWindow.h"
#include "tallybook/desktop/host/QtFileDialogs.h"
#include "tallybook/desktop/host/QtMessageBoxes.h"
#include "tallybook/desktop/host/QtShell.h"
#include "tallybook/desktop/host/WindowHandles.h"

class QWidget;

namespace tallybook::desktop {

class DesktopApp;
class QtScreen;

class QtPlatform : private StopWitness {
 public:
  explicit QtPlatform(const Text& application_title = "Tallybook");
  ~QtPlatform() override;
  QtPlatform(const QtPlatform&) = delete;
  QtPlatform& operator=(const QtPlatform&) = delete;

  // The window over which boxes and progress stand where no window of the application is in front; null for none.
  void SetMainWindow(QWidget* window);
  // Whose log gets the reason where a record stops the program; null for none.
  void SetApp(DesktopApp* app) { app_ = app; }

  // The platform's own files, whatever layer is installed over them.
  [[nodiscard]] application::WholeFiles& Files();
  [[nodiscard]] QtMessageBoxes& Boxes();
  [[nodiscard]] QtFileDialogs& Dialogs();
  [[nodiscard]] QtShell& Shell();
  [[nodiscard]] QtScreen& Screen();
  [[nodiscard]] ProgressWindow& Progress();
  [[nodiscard]] WindowHandles& Handles();

 private:
  void ProgramStops(const StopReason& reason) override;

  struct Seams;
  std::unique_ptr<Seams> seams_;
  DesktopApp* app_ = nullptr;
};

}  // namespace tallybook::desktop
