#include "tallybook/application/ReferenceApp.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/Failure.h"
#include "support/Utility.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

// The folder that an environment variable names; empty where it is unset, empty or relative.
fs::path FolderOf(const char* variable) {
  const char* value = std::getenv(variable);
  const fs::path folder = value == nullptr ? "" : value;
  return folder.is_absolute() ? folder : fs::path();
}

Text UserFolder(const char* variable, const char* below_home) {
  if (const fs::path folder = FolderOf(variable); !folder.empty()) return (folder / "tallybook").string();
  if (const fs::path home = FolderOf("HOME"); !home.empty()) return (home / below_home / "tallybook").string();
  return (fs::temp_directory_path() / "tallybook").string();
}

Text Or(const Text& wanted, const Text& otherwise) {
  return wanted.empty() ? otherwise : wanted;
}

Text WorkingFolder() {
  std::error_code error;
  const fs::path folder = fs::current_path(error);
  return error ? "." : folder.string();
}

}  // namespace

Text UserConfigurationFolder() {
  return UserFolder("XDG_CONFIG_HOME", ".config");
}

Text UserStateFolder() {
  return UserFolder("XDG_STATE_HOME", ".local/state");
}

ReferenceApp::ReferenceApp(const ReferenceAppOptions& options)
    : title_(Or(options.title, "Tallybook")),
      settings_file_(Or(options.settings_file, UserConfigurationFolder() + "/tallybook.ini")),
      log_(Or(options.log_file, UserStateFolder() + "/tallybook.log")),
      import_folder_(AddBackslash(Or(options.import_folder, WorkingFolder()))),
      data_folder_(AddBackslash(Or(options.data_folder, WorkingFolder()))) {}

void ReferenceApp::MakeSettingsFolder() const {
  const fs::path folder = fs::path(settings_file_).parent_path();
  if (folder.empty()) return;
  std::error_code error;
  fs::create_directories(folder, error);
  if (error)
    throw Failure(FailureNumber::kPathOrAccess,
                  "The settings folder " + folder.string() + " cannot be made: " + error.message(), "ReferenceApp");
}

void ReferenceApp::BeginImport() {
  if (import_listener_) import_listener_();
}

void ReferenceApp::HelpTopic(Long topic) {
  if (!help_display_)
    throw Failure(FailureNumber::kFeatureUnavailable,
                  "This application shows no help; topic " + std::to_string(topic) + " was asked for", "ReferenceApp");
  help_display_(topic);
}

void ReferenceApp::SetFont(const Text& name, Single points) {
  font_name_ = name;
  font_size_ = points;
}

}  // namespace tallybook::application
