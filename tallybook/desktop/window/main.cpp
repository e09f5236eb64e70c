// The application `tallybook-desktop [FILE]`.
#include <QtCore/QCommandLineParser>
#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtGui/QIcon>
#include <QtWidgets/QApplication>
#include <vector>

#include "base/Failure.h"
#include "platform/MessageBoxes.h"
#include "support/WinAPI.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/window/DesktopSettings.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tallybook/desktop/window/Preferences.h"

namespace tallybook::desktop {

namespace {

// No exception may leave an event: what nobody below has told is told here, and the window goes on.
class Application final : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    try {
      return QApplication::notify(receiver, event);
    } catch (...) {
      ShowMessage(CurrentFailure().Description(), kStopIcon, "");
      return true;
    }
  }
};

// A file of settings that cannot be read keeps nobody from his books.
Preferences PreferencesAtStart(const Text& settings_file) {
  try {
    return ReadPreferences(settings_file);
  } catch (...) {
    ShowMessage(CurrentFailure().Description(), kExclamationIcon, "");
    return {};
  }
}

// What is named, or else the book of the last time where the user wants it and it is still there.
Text FileToOpen(const QStringList& named, const Preferences& preferences, const DesktopSettings& settings) {
  if (!named.isEmpty()) return FromQt(named.front());
  const std::vector<Text> recent = settings.RecentBooks();
  const bool opens = preferences.opens_last_book && !recent.empty() && QFile::exists(ToQt(recent.front()));
  return opens ? recent.front() : Text();
}

int Run(QApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription("Keeps operating figures per account, field and date.");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument("FILE", "A book to open, or a file to import", "[FILE]");
  parser.process(application);
  QtPlatform platform;
  const Text settings_file = application::UserConfigurationFolder() + "/tallybook.ini";
  const Preferences preferences = PreferencesAtStart(settings_file);
  ApplyFont(preferences);
  application::ReferenceAppOptions options;
  options.settings_file = settings_file;
  options.import_folder = preferences.folder.empty() ? DocumentsFolder() : preferences.folder;
  options.data_folder = options.import_folder;
  DesktopApp app(options);
  DesktopFactory factory(platform.Handles(), platform.Progress());
  const ConversationMeans means{.platform = platform, .app = app, .factory = factory};
  platform.SetApp(&app);
  DesktopSettings settings(DesktopSettingsPath());
  MainWindow window(app, settings, StyleFor(preferences, SystemStyle()), &means);
  platform.SetMainWindow(&window);
  app.SetHelpDisplay([&window](Long /*topic*/) { window.ShowHelp(); });
  platform.Dialogs().SetHelpDisplay([&window](const Text& /*help_file*/, Long /*topic*/) { window.ShowHelp(); });
  window.show();
  const Text file = FileToOpen(parser.positionalArguments(), preferences, settings);
  if (!file.empty()) QTimer::singleShot(0, &window, [&] { window.OpenFile(file); });
  const int status = QApplication::exec();
  platform.SetMainWindow(nullptr);
  app.SetHelpDisplay({});
  platform.Dialogs().SetHelpDisplay({});
  return status;
}

}  // namespace

}  // namespace tallybook::desktop

int main(int argc, char** argv) {
  tallybook::application::HoldClosedStandardStreams();
  tallybook::desktop::Application application(argc, argv);
  QApplication::setApplicationName("tallybook-desktop");
  QApplication::setApplicationDisplayName("Tallybook");
  QApplication::setApplicationVersion(TALLYBOOK_VERSION);
  QApplication::setDesktopFileName("tallybook-desktop");
  QIcon icon;
  for (const char* size : {"16", "24", "32", "48", "64", "128", "256"})
    icon.addFile(QString(":/icons/%1.png").arg(size));
  QApplication::setWindowIcon(icon);
  return tallybook::desktop::Run(application);
}
