// The settings page, laid out from the description of all settings (Preferences.h).
#pragma once

#include <QtWidgets/QDialog>
#include <functional>
#include <vector>

#include "tallybook/desktop/window/Preferences.h"

class QVBoxLayout;

namespace tallybook::desktop {

class SettingsDialog final : public QDialog {
 public:
  // `settings_file` need not be there yet.
  SettingsDialog(QWidget* parent, Text settings_file);

  // Writes what was changed, and nothing else; what fails is told and the dialog stays. So it does for a folder that is
  // not there.
  void accept() override;

 private:
  // A setting on the page.
  struct Row {
    const Preference* preference;
    QWidget* widget;
    std::function<Text()> value;
    std::function<void(const Text&)> show;
    Text before;  // what the page showed at first
  };

  void AddGroup(QVBoxLayout& layout, const PreferenceGroup& group);
  Row NewRow(const Preference& preference);
  Row NewSwitch(const Preference& preference);
  Row NewNumber(const Preference& preference);
  Row NewFont(const Preference& preference);
  Row NewChoice(const Preference& preference);
  Row NewFolder(const Preference& preference);
  void ShowValues();
  [[nodiscard]] bool HasFolders();
  void Tell(const QString& words);

  Text settings_file_;
  std::vector<Row> rows_;
};

}  // namespace tallybook::desktop
