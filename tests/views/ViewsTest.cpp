#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <vector>

#include "base/Failure.h"
#include "dialogs/DefinitionEditor.h"
#include "dialogs/DefinitionRows.h"
#include "dialogs/FormInstances.h"
#include "exchange/CDataExchange.h"
#include "forms/Form.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"
#include "views/Views.h"

namespace tallybook::testing {
namespace {

using ::testing::IsEmpty;
using views::ControlName;
using views::FormView;
using views::Part;
using views::Shape;

// One of each form that the component shows.
class ViewsTest : public ::testing::Test {
 protected:
  ViewsTest() {
    Add(std::make_unique<dlgQDXImp>());
    Add(std::make_unique<frmImport>());
    Add(std::make_unique<dlgExport>());
    Add(std::make_unique<frmDelimited>(host_->factory));
    Add(std::make_unique<dlgRepSaveAs>());
    Add(std::make_unique<dlgRepPrint>(host_->factory));
    Add(std::make_unique<DefinitionEditor>(means_));
  }
  void Add(std::unique_ptr<Form> form) { forms_.push_back(std::move(form)); }

  // Where every control of a view stands, outer ones first, in reading order.
  [[nodiscard]] static std::vector<ControlName> Told(const FormView& view) {
    std::vector<ControlName> told;
    const auto tell = [&](const ControlName& name) {
      if (!name.IsNone()) told.push_back(name);
    };
    ForEachPart(view.content, [&](const Part& part) {
      tell(part.label);
      tell(part.control);
    });
    for (const views::Menu& menu : view.menus)
      for (const ControlName& entry : menu.entries) tell(entry);
    for (const ControlName& name : view.unseen) tell(name);
    return told;
  }
  [[nodiscard]] static Text Words(const Form& form, const ControlName& name) {
    return form.Name() + " " + name.name + " " + std::to_string(name.index);
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  CDataExchange exchange_{host_->factory};
  std::unique_ptr<AccountRecord> accounts_ = host_->book.NewAccountRecord();
  std::unique_ptr<FieldRecord> fields_ = host_->book.NewFieldRecord();
  MemoryEdtForm list_{host_->record};
  DefinitionRows rows_{list_, exchange_};
  DefinitionMeans means_{.factory = host_->factory,
                         .masterfile = host_->book,
                         .exchange = exchange_,
                         .accounts = *accounts_,
                         .fields = *fields_,
                         .rows = rows_};
  std::vector<std::unique_ptr<Form>> forms_;
};

TEST_F(ViewsTest, ThereIsOneForEveryFormAndNoneForAnyOther) {
  std::vector<Text> with_view;
  for (const FormView& view : views::AllViews()) with_view.push_back(view.form);
  std::vector<Text> forms;
  for (const auto& form : forms_) forms.push_back(form->Name());
  EXPECT_THAT(with_view, ::testing::UnorderedElementsAreArray(forms));
}

TEST_F(ViewsTest, AFormWithoutOneIsAnError) {
  EXPECT_THAT([] { (void)views::ViewOf("frmUnknown"); }, FailsWith(FailureNumber::kInvalidArgument));
}

TEST_F(ViewsTest, EveryControlOfAFormStandsInItsViewExactlyOnce) {
  for (const auto& form : forms_) {
    std::map<const Control*, int> times;
    for (const ControlName& name : Told(views::ViewOf(form->Name()))) {
      const Control* const control = form->Find(name.name, name.index);
      EXPECT_NE(control, nullptr) << Words(*form, name) << " is no control of the form";
      ++times[control];
    }
    for (const Control* const control : form->Controls())
      EXPECT_EQ(times[control], 1) << Words(*form, {control->Name(), control->Index()});
  }
}

TEST_F(ViewsTest, EveryLabelBelongsToAControlThatTakesTheFocus) {
  for (const auto& form : forms_) {
    ForEachPart(views::ViewOf(form->Name()).content, [&](const Part& part) {
      if (part.label.IsNone()) return;
      const Part* named = &part;
      while (named->shape != Shape::kControl && !named->parts.empty()) named = &named->parts.front();
      const Control* const control = form->Find(named->control.name, named->control.index);
      ASSERT_NE(control, nullptr) << Words(*form, part.label);
      EXPECT_TRUE(control->TakesFocus()) << Words(*form, part.label);
      const Control* const label = form->Find(part.label.name, part.label.index);
      EXPECT_NE(dynamic_cast<const Label*>(label), nullptr) << Words(*form, part.label);
    });
  }
}

TEST_F(ViewsTest, TheTabOrderOfAFormIsTheReadingOrderOfItsView) {
  for (const auto& form : forms_) {
    std::vector<Text> read;
    for (const ControlName& name : Told(views::ViewOf(form->Name()))) {
      const Control* const control = form->Find(name.name, name.index);
      const bool is_shown =
          std::ranges::find(views::ViewOf(form->Name()).unseen, name) == views::ViewOf(form->Name()).unseen.end();
      if (control != nullptr && control->TakesFocus() && is_shown) read.push_back(Words(*form, name));
    }
    std::vector<Text> tabbed;
    for (const Control* const control : form->Controls()) {
      const ControlName name{control->Name(), control->Index()};
      if (control->TakesFocus() && std::ranges::find(read, Words(*form, name)) != read.end())
        tabbed.push_back(Words(*form, name));
    }
    EXPECT_EQ(read, tabbed);
  }
}

TEST_F(ViewsTest, WhatStandsInAFrameIsContainedInIt) {
  for (const auto& form : forms_) {
    const std::function<void(const Part&, const Control*)> look = [&](const Part& part, const Control* around) {
      const bool is_frame = part.shape == Shape::kFrame;
      for (const ControlName& name :
           {part.label, part.shape == Shape::kControl || is_frame ? part.control : ControlName()}) {
        const Control* const control = name.IsNone() ? nullptr : form->Find(name.name, name.index);
        if (control == nullptr) continue;
        EXPECT_EQ(control->Container(), around) << Words(*form, name);
      }
      const Control* const inner = is_frame ? form->Find(part.control.name, part.control.index) : around;
      for (const Part& one : part.parts) look(one, inner);
    };
    look(views::ViewOf(form->Name()).content, nullptr);
  }
}

TEST_F(ViewsTest, EveryDialogHasAMainButton) {
  for (const FormView& view : views::AllViews()) {
    int mains = 0;
    ForEachPart(view.content, [&](const Part& part) { mains += part.role == views::Role::kMain ? 1 : 0; });
    EXPECT_EQ(mains, 1) << view.form;
  }
}

}  // namespace
}  // namespace tallybook::testing
