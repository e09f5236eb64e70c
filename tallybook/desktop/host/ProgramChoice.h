// The programs that the desktop has installed, and the window in which one is chosen for a file.
#pragma once

#include <QString>
#include <QStringList>
#include <vector>

class QWidget;

namespace tallybook::desktop {

// A program as its desktop entry tells it (freedesktop.org, "Desktop Entry").
struct InstalledProgram {
  QString name;
  QString command;  // the line of the key Exec
};

// Those that can open a file and want to be seen, from the folders `data_folders` (each with a folder "applications"),
// in the order of their names. An entry of an earlier folder hides those of its name in later ones.
[[nodiscard]] std::vector<InstalledProgram> ProgramsIn(const QStringList& data_folders);

// The words of a command line with the file in its place: where the line has a field for files or addresses, else at
// the end. Fields of other kinds are left out.
[[nodiscard]] QStringList CommandWords(const QString& command, const QString& file);

// Lets the user choose, over `owner`. The words of the command to start; none where he cancelled.
[[nodiscard]] QStringList ChooseProgram(const QString& file, const QStringList& data_folders, QWidget* owner);

}  // namespace tallybook::desktop
