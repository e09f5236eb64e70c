// The application object of the reference host: title, folders, settings file, log. The command and the desktop each
// make one at their start, and it outlives everything else of the system. One thread.
#pragma once

#include <functional>

#include "host/HostApp.h"
#include "tallybook/application/FileLog.h"

namespace tallybook::application {

// What an application may fix; an empty text takes the value told beside it.
struct ReferenceAppOptions {
  Text title;          // "Tallybook"
  Text settings_file;  // tallybook.ini in the user's configuration folder
  Text log_file;       // tallybook.log in the user's state folder
  Text import_folder;  // the working folder
  Text data_folder;    // the working folder
};

// The user's folders by the XDG base directories of freedesktop.org, with "/tallybook" appended and no separator
// at the end. A variable that is unset, empty or relative counts as unset, as they ask. Without a home
// folder either, both lie in the system's folder for temporary files.
[[nodiscard]] Text UserConfigurationFolder();  // $XDG_CONFIG_HOME, or else ~/.config
[[nodiscard]] Text UserStateFolder();          // $XDG_STATE_HOME, or else ~/.local/state

class ReferenceApp : public HostApp {
 public:
  explicit ReferenceApp(const ReferenceAppOptions& options = {});

  [[nodiscard]] Text Title() const override { return title_; }
  HostLog& Log() override { return log_; }
  // The log file, whatever a derived application puts before it.
  [[nodiscard]] FileLog& OwnLog() { return log_; }
  [[nodiscard]] const Text& LogFileName() const { return log_.Path(); }

  [[nodiscard]] Text SettingsFileName() const override { return settings_file_; }
  // Makes the folder of the settings file, for whoever is about to write there. Failure 75 with the path where it
  // cannot be made.
  void MakeSettingsFolder() const;

  void BeginImport() override;
  // Told at each BeginImport; empty for nobody.
  void SetImportListener(std::function<void()> listener) { import_listener_ = std::move(listener); }

  [[nodiscard]] Text DefaultFolder() const override { return import_folder_; }
  [[nodiscard]] Text DefaultDataFolder() const override { return data_folder_; }
  // 1: whoever runs the application may browse all files; the operating system's own rights are what limits them.
  [[nodiscard]] Integer UnrestrictedFiles() const override { return 1; }

  [[nodiscard]] Text HelpFile() const override { return help_file_; }
  void SetHelpFile(const Text& path) { help_file_ = path; }
  // Fails with Failure 73 where the application has set no display for help.
  void HelpTopic(Long topic) override;
  void SetHelpDisplay(std::function<void(Long topic)> display) { help_display_ = std::move(display); }

  [[nodiscard]] Text FontName() const override { return font_name_; }
  [[nodiscard]] Single FontSize() const override { return font_size_; }
  void SetFont(const Text& name, Single points);

  [[nodiscard]] Long TypeAheadDelay() const override { return 1000; }

  [[nodiscard]] Integer UserOption() const override { return user_option_; }
  void SetUserOption(Integer option) { user_option_ = option; }

  [[nodiscard]] Long IdleMinutes() const override { return idle_minutes_; }
  void SetIdleMinutes(Long minutes) { idle_minutes_ = minutes; }
  [[nodiscard]] bool IdleExpired() const override { return idle_expired_; }
  void SetIdleExpired(bool expired) override { idle_expired_ = expired; }
  [[nodiscard]] bool Finished() const override { return finished_; }
  void SetFinished(bool finished) { finished_ = finished; }

 private:
  Text title_;
  Text settings_file_;
  FileLog log_;
  Text import_folder_;
  Text data_folder_;
  Text help_file_;
  Text font_name_ = "Sans";
  Single font_size_ = 10.0F;
  Integer user_option_ = 0;
  Long idle_minutes_ = 0;
  bool idle_expired_ = false;
  bool finished_ = false;
  std::function<void()> import_listener_;
  std::function<void(Long)> help_display_;
};

}  // namespace tallybook::application
