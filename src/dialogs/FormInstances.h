// The dialogs of the process: one instance of each, made on first use and released when the conversation that used it
// ends. The one place where dialogs keep state of the process. One thread; only one conversation runs at a time.
#pragma once

#include <memory>
#include <type_traits>

#include "base/Types.h"
#include "dialogs/DefinitionEditor.h"
#include "dialogs/dlgExport.h"
#include "dialogs/dlgQDXImp.h"
#include "dialogs/dlgRepSaveAs.h"
#include "dialogs/frmDataExc.h"
#include "dialogs/frmDelimited.h"
#include "dialogs/frmImport.h"
#include "reportdialog/dlgRepPrint.h"

namespace tallybook {

template <typename Dialog>
class OnlyInstance {
 public:
  // The instance, made from the arguments where there is none yet.
  template <typename... Arguments>
  Dialog& Get(Arguments&... arguments) {
    if (!dialog_) dialog_ = std::make_unique<Dialog>(arguments...);
    return *dialog_;
  }
  // Null where there is none.
  [[nodiscard]] Dialog* IfThere() const { return dialog_.get(); }
  // Unloads and ends it; harmless where there is none.
  void Release() noexcept {
    const std::unique_ptr<Dialog> ending = std::move(dialog_);
    if constexpr (std::is_base_of_v<Form, Dialog>) Unload(ending.get());
  }

 private:
  static void Unload(Form* form) noexcept {
    try {
      if (form != nullptr) form->Unload();
    } catch (...) {
      return;  // meant: the window goes with the instance, and the conversation's own outcome stands
    }
  }

  std::unique_ptr<Dialog> dialog_;
};

struct FormInstances {
  OnlyInstance<frmImport> Import;
  OnlyInstance<dlgExport> Export;
  OnlyInstance<dlgRepPrint> RepPrint;
  OnlyInstance<dlgQDXImp> QDXImp;
  OnlyInstance<dlgRepSaveAs> RepSaveAs;
  OnlyInstance<frmDelimited> Delimited;
  OnlyInstance<DefinitionEditor> Editor;
  OnlyInstance<frmDataExc> DataExc;
  // The file that the component's help requests open: the host's, once a conversation has begun.
  Text HelpFile;
};

[[nodiscard]] FormInstances& TheForms();

// Releases every instance; HelpFile stays. At the end of a conversation, and between tests.
void ReleaseForms() noexcept;

}  // namespace tallybook
