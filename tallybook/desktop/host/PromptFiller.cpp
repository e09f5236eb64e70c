#include "tallybook/desktop/host/PromptFiller.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>

#include "forms/Form.h"
#include "forms/TextBox.h"

namespace tallybook::desktop {

namespace {

Form* LoadedForm(const Text& name) {
  const auto& forms = OpenForms();
  const auto found = std::ranges::find(forms, name, [](const Form* form) { return form->Name(); });
  return found == forms.end() ? nullptr : *found;
}

TextBox* BoxOf(const Form* form) {
  return form == nullptr ? nullptr : dynamic_cast<TextBox*>(form->Find("Text1"));
}

}  // namespace

PromptFiller::PromptFiller(const Text& form, const Text& file) : form_(form), file_(file) {
  if (!file_.empty()) QCoreApplication::instance()->installEventFilter(this);
}

bool PromptFiller::eventFilter(QObject* /*watched*/, QEvent* event) {
  const bool goes_on = false;
  if (event->type() != QEvent::Show) return goes_on;
  const Form* const form = LoadedForm(form_);
  if (form == nullptr || !form->Visible()) return goes_on;
  QCoreApplication::instance()->removeEventFilter(this);
  if (TextBox* const box = BoxOf(form)) box->UserSetText(file_);
  return goes_on;
}

}  // namespace tallybook::desktop
