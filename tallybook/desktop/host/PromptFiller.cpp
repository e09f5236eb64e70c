#include "tallybook/desktop/host/PromptFiller.h"

#include <algorithm>

#include "forms/Form.h"
#include "forms/TextBox.h"

namespace tallybook::desktop {

namespace {

constexpr int kLookEvery = 10;  // milliseconds

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
  if (file_.empty()) return;
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Look(); });
  timer_.start(kLookEvery);
}

void PromptFiller::Look() {
  const Form* const form = LoadedForm(form_);
  if (form == nullptr || !form->Visible()) return;
  timer_.stop();
  if (TextBox* const box = BoxOf(form)) box->UserSetText(file_);
}

}  // namespace tallybook::desktop
