// The application `tallybook-desktop [FILE]`.
#include <QtCore/QCommandLineParser>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "platform/posix/PosixPlatform.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/desktop/figures/LocaleStyle.h"
#include "tallybook/desktop/window/DesktopSettings.h"
#include "tallybook/desktop/window/MainWindow.h"

namespace tallybook::desktop {

namespace {

int Run(QApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription("Keeps operating figures per account, field and date.");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument("FILE", "A book to open", "[FILE]");
  parser.process(application);
  InstallPlatform(PosixPlatform("Tallybook"));
  application::ReferenceApp app;
  DesktopSettings settings(DesktopSettingsPath());
  MainWindow window(app, settings, SystemStyle());
  window.show();
  if (!parser.positionalArguments().isEmpty()) window.OpenFile(FromQt(parser.positionalArguments().front()));
  return QApplication::exec();
}

}  // namespace

}  // namespace tallybook::desktop

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("tallybook-desktop");
  QApplication::setApplicationDisplayName("Tallybook");
  QApplication::setApplicationVersion(TALLYBOOK_VERSION);
  QApplication::setDesktopFileName("tallybook-desktop");
  return tallybook::desktop::Run(application);
}
