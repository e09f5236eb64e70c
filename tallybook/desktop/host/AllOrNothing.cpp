#include "tallybook/desktop/host/AllOrNothing.h"

#include "tallybook/application/FileKind.h"
#include "tallybook/application/FileRemoval.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kSection = "Import";
constexpr const char* kKey = "AllOrNothing";
constexpr const char* kOn = "True";
constexpr const char* kOff = "False";

}  // namespace

AllOrNothing::AllOrNothing(const Means& means) : means_(means), settings_(means.factory.NewIniFile()) {
  settings_->SetFileName(means_.book.SettingsFileName());
  settings_->SetSection(kSection);
}

void AllOrNothing::Recall() {
  is_wanted_ = settings_->ReadValue(kKey, kOff) == kOn;
}

void AllOrNothing::Want(bool wanted) {
  is_wanted_ = wanted;
  settings_->WriteValue(kKey, wanted ? kOn : kOff);
}

std::unique_ptr<application::AtomicImport> AllOrNothing::Begin() {
  if (!is_wanted_) return nullptr;
  return std::make_unique<application::AtomicImport>(means_.book, means_.files, [means = means_](const Text& path) {
    application::NeedRegularFile(path);
    means.rules.NeedNoBook(path);
    application::NeedRemovable(means.files, path);
  });
}

}  // namespace tallybook::desktop
