// The settings page: what the installation's settings file rules, in words.
#pragma once

#include <QtWidgets/QDialog>

#include "base/Types.h"

class QCheckBox;
class QSpinBox;

namespace tallybook::desktop {

class SettingsDialog final : public QDialog {
 public:
  // `settings_file` need not be there yet.
  SettingsDialog(QWidget* parent, Text settings_file);

  // Writes what was changed; what fails is told and the dialog stays.
  void accept() override;

 private:
  Text settings_file_;
  QCheckBox* keep_journal_;
  QSpinBox* cache_;
};

}  // namespace tallybook::desktop
