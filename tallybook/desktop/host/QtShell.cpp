#include "tallybook/desktop/host/QtShell.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <filesystem>
#include <memory>
#include <system_error>

#include "base/Failure.h"
#include "tallybook/desktop/host/ProgramChoice.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kOpener = "xdg-open";
// The opener's status where a program that it needs is missing (xdg-open(1), "Exit codes").
constexpr int kNoApplication = 3;
constexpr int kPatience = 5000;  // milliseconds; a program that is still at it by then has the file
constexpr const char* kChoiceOfProgram = "shell32.dll,OpenAs_RunDLL ";

void Start(const QStringList& words, const Text& folder) {
  if (QProcess::startDetached(words.front(), words.mid(1), ToQt(folder))) return;
  throw Failure(FailureNumber::kFileNotFound, FromQt(words.front()) + ": this program cannot be started", "QtShell");
}

}  // namespace

Long QtShell::Open(const Text& file_name, Integer /*state*/) {
  if (before_open_) before_open_();
  const QString opener = QStandardPaths::findExecutable(kOpener);
  if (opener.isEmpty()) return kNoAssociation;
  // It may go on behind this call, and is taken away by its own end then.
  auto* const process = new QProcess;
  QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
  QEventLoop loop;
  Long result = kOpened;
  QObject::connect(process, &QProcess::finished, &loop, [&](int status) {
    if (status != 0) result = status == kNoApplication ? kNoAssociation : kNotOpened;
    loop.quit();
  });
  QTimer::singleShot(kPatience, &loop, [&] { loop.quit(); });
  process->start(opener, {ToQt(file_name)});
  if (!process->waitForStarted()) {
    delete process;
    return kNotOpened;
  }
  loop.exec();
  return result;
}

void QtShell::Run(const Text& program, const Text& arguments, const Text& folder) {
  if (!arguments.starts_with(kChoiceOfProgram)) {
    QStringList words = QProcess::splitCommand(ToQt(arguments));
    words.prepend(ToQt(program));
    return Start(words, folder);
  }
  const Text file = arguments.substr(Text(kChoiceOfProgram).size());
  const QStringList places = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
  const QStringList words = ChooseProgram(ToQt(file), places, QApplication::activeWindow());
  if (!words.isEmpty()) Start(words, "");
}

Text QtShell::CurrentFolder() {
  std::error_code trouble;
  const std::filesystem::path folder = std::filesystem::current_path(trouble);
  if (!trouble) return folder.string();
  throw Failure(FailureNumber::kPathNotFound, "The folder in force cannot be told: " + trouble.message());
}

void QtShell::SetCurrentFolder(const Text& path) {
  std::error_code trouble;
  std::filesystem::current_path(path, trouble);
  if (trouble) {
    throw Failure(FailureNumber::kPathNotFound, "The folder cannot be entered: " + path + ": " + trouble.message());
  }
}

}  // namespace tallybook::desktop
