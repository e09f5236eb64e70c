// Whether the imports of a book are to be done wholly or not at all (application/AtomicImport), as the user has chosen:
// the choice stands in the book's settings file beside those of the component's prompts, section "Import", key
// "AllOrNothing". One thread; for one conversation.
#pragma once

#include <memory>

#include "host/HostFactory.h"
#include "host/IniFile.h"
#include "tallybook/application/AtomicImport.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/Book.h"

namespace tallybook::desktop {

class AllOrNothing {
 public:
  struct Means {
    engine::Book& book;
    application::WholeFiles& files;         // of the installed platform
    const application::OutputRules& rules;  // of what an import must not take the name away from
    HostFactory& factory;
  };
  // All of it outlives this. It is not wanted until it is recalled.
  explicit AllOrNothing(const Means& means);
  // As the book remembers it. Fails as IniFile::ReadValue, and it is as it was then.
  void Recall();

  // What stands beside the choice wherever it is offered.
  static constexpr const char* kCaption = "All or &nothing";
  static constexpr const char* kHelp =
      "Where the import fails or is cancelled, no figure of it stays, and no file is deleted or renamed.";

  [[nodiscard]] bool IsWanted() const { return is_wanted_; }
  // Remembers it. Fails as IniFile::WriteValue; it holds for this conversation all the same.
  void Want(bool wanted);

  // The import that begins now; nothing where none is wanted.
  [[nodiscard]] std::unique_ptr<application::AtomicImport> Begin();

 private:
  Means means_;
  std::unique_ptr<IniFile> settings_;
  bool is_wanted_ = false;
};

}  // namespace tallybook::desktop
