// The application `tallybook-desktop [FILE]`.
#include <QtCore/QCommandLineParser>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include "tallybook/desktop/figures/LocaleStyle.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/window/DesktopSettings.h"
#include "tallybook/desktop/window/MainWindow.h"

namespace tallybook::desktop {

namespace {

int Run(QApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription("Keeps operating figures per account, field and date.");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument("FILE", "A book to open, or a file to import", "[FILE]");
  parser.process(application);
  QtPlatform platform;
  DesktopApp app;
  DesktopFactory factory(platform.Handles(), platform.Progress());
  const ConversationMeans means{.platform = platform, .app = app, .factory = factory};
  platform.SetApp(&app);
  DesktopSettings settings(DesktopSettingsPath());
  MainWindow window(app, settings, SystemStyle(), &means);
  platform.SetMainWindow(&window);
  window.show();
  const QStringList files = parser.positionalArguments();
  if (!files.isEmpty()) QTimer::singleShot(0, &window, [&] { window.OpenFile(FromQt(files.front())); });
  const int status = QApplication::exec();
  platform.SetMainWindow(nullptr);
  return status;
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
