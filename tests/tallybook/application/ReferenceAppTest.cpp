#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <map>

#include "tallybook/application/ReferenceApp.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;

// Sets environment variables for its life; an empty value takes the variable away.
class Environment {
 public:
  explicit Environment(const std::map<Text, Text>& values) {
    for (const auto& [name, value] : values) {
      const char* const before = std::getenv(name.c_str());
      before_[name] = before == nullptr ? "" : before;
      Set(name, value);
    }
  }
  ~Environment() {
    for (const auto& [name, value] : before_) Set(name, value);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  static void Set(const Text& name, const Text& value) {
    if (value.empty()) {
      ::unsetenv(name.c_str());
    } else {
      ::setenv(name.c_str(), value.c_str(), 1);
    }
  }
  std::map<Text, Text> before_;
};

TEST(ReferenceApp, KeepsItsFilesInTheUsersFolders) {
  const Environment environment({{"XDG_CONFIG_HOME", "/conf"}, {"XDG_STATE_HOME", "/state"}, {"HOME", "/home/me"}});
  const ReferenceApp app;
  EXPECT_EQ(app.Title(), "Tallybook");
  EXPECT_EQ(app.SettingsFileName(), "/conf/tallybook/tallybook.ini");
  EXPECT_EQ(app.LogFileName(), "/state/tallybook/tallybook.log");
}

TEST(ReferenceApp, FallsBackToTheHomeFolder) {
  for (const char* useless : {"", "relative/folder"}) {
    const Environment environment({{"XDG_CONFIG_HOME", useless}, {"XDG_STATE_HOME", useless}, {"HOME", "/home/me"}});
    const ReferenceApp app;
    EXPECT_EQ(app.SettingsFileName(), "/home/me/.config/tallybook/tallybook.ini");
    EXPECT_EQ(app.LogFileName(), "/home/me/.local/state/tallybook/tallybook.log");
  }
}

TEST(ReferenceApp, DoesWithoutAHomeFolder) {
  const Environment environment({{"XDG_CONFIG_HOME", ""}, {"HOME", ""}, {"TMPDIR", "/tmp"}});
  EXPECT_EQ(UserConfigurationFolder(), "/tmp/tallybook");
}

TEST(ReferenceApp, TakesWhatItsOptionsFix) {
  ReferenceApp app({.title = "Figures",
                    .settings_file = "/a/b.ini",
                    .log_file = "/a/b.log",
                    .import_folder = "/in",
                    .data_folder = "/data/"});
  EXPECT_EQ(app.Title(), "Figures");
  EXPECT_EQ(app.SettingsFileName(), "/a/b.ini");
  EXPECT_EQ(app.LogFileName(), "/a/b.log");
  EXPECT_EQ(app.DefaultFolder(), "/in/");
  EXPECT_EQ(app.DefaultDataFolder(), "/data/");
}

TEST(ReferenceApp, GivesTheWorkingFolderReadyForAFileName) {
  const testing::ScriptedPlatform platform;
  EXPECT_EQ(ReferenceApp().DefaultFolder() + "Import.csv", (std::filesystem::current_path() / "Import.csv").string());
}

TEST(ReferenceApp, MakesTheFolderOfItsSettingsOnDemandAlone) {
  const testing::TempFolder folder;
  const ReferenceApp app(
      {.title = {}, .settings_file = folder.Path("a/b/t.ini"), .log_file = {}, .import_folder = {}, .data_folder = {}});
  EXPECT_FALSE(folder.Has("a"));
  app.MakeSettingsFolder();
  EXPECT_TRUE(folder.Has("a/b"));
  folder.Write("file", "");
  const ReferenceApp blocked({.title = {},
                              .settings_file = folder.Path("file/t.ini"),
                              .log_file = {},
                              .import_folder = {},
                              .data_folder = {}});
  EXPECT_THAT([&] { blocked.MakeSettingsFolder(); }, FailsWith(FailureNumber::kPathOrAccess, folder.Path("file")));
}

TEST(ReferenceApp, TellsTheListenerOfEachImport) {
  ReferenceApp app;
  EXPECT_NO_THROW(app.BeginImport());
  int imports = 0;
  app.SetImportListener([&] { ++imports; });
  app.BeginImport();
  app.BeginImport();
  EXPECT_EQ(imports, 2);
}

TEST(ReferenceApp, ShowsHelpWhereTheApplicationHasADisplay) {
  ReferenceApp app;
  EXPECT_THAT([&] { app.HelpTopic(17); }, FailsWith(FailureNumber::kFeatureUnavailable, "17"));
  Long shown = 0;
  app.SetHelpDisplay([&](Long topic) { shown = topic; });
  app.HelpTopic(17);
  EXPECT_EQ(shown, 17);
}

TEST(ReferenceApp, KeepsWhatTheApplicationSets) {
  ReferenceApp app;
  EXPECT_EQ(app.IdleMinutes(), 0) << "never, until somebody says otherwise";
  EXPECT_FALSE(app.IdleExpired());
  EXPECT_FALSE(app.Finished());
  EXPECT_NE(app.UnrestrictedFiles(), 0);
  app.SetIdleMinutes(5);
  app.SetIdleExpired(true);
  app.SetFinished(true);
  app.SetUserOption(3);
  app.SetFont("Serif", 12.0F);
  app.SetHelpFile("/help");
  EXPECT_EQ(app.IdleMinutes(), 5);
  EXPECT_TRUE(app.IdleExpired());
  EXPECT_TRUE(app.Finished());
  EXPECT_EQ(app.UserOption(), 3);
  EXPECT_EQ(app.FontName(), "Serif");
  EXPECT_EQ(app.FontSize(), 12.0F);
  EXPECT_EQ(app.HelpFile(), "/help");
}

}  // namespace
}  // namespace tallybook::application
