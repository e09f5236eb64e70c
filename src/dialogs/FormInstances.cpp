#include "dialogs/FormInstances.h"

namespace tallybook {

FormInstances& TheForms() {
  static FormInstances forms;
  return forms;
}

void ReleaseForms() noexcept {
  FormInstances& forms = TheForms();
  forms.Import.Release();
  forms.Export.Release();
  forms.RepPrint.Release();
  forms.QDXImp.Release();
  forms.RepSaveAs.Release();
  forms.Delimited.Release();
  forms.Editor.Release();
  forms.DataExc.Release();
}

}  // namespace tallybook
