#include "views/Views.h"

#include <algorithm>

#include "base/Failure.h"

namespace tallybook::views {

namespace {

// What a title or the path of a file needs to be read without scrolling.
constexpr int kNameWidth = 60;
// A row of either side of a match: code and description, twice.
constexpr int kMatchWidth = 118;
constexpr int kMatchRows = 14;

// A box to type in with the button that opens the picker for it.
Part Browsed(const char* box, const char* button) {
  return Columns({Stretched(AtLeast(Shown({box}), kNameWidth)), Shown({button})});
}

// What the header of a file says.
Part FileHeader() {
  return Whole(Stretched(Spoken("Header of the file", AtLeast(Shown({"QDXGrid"}), 0, 6))));
}

Part SaveButtonsFoot() {
  return Buttons({As(Role::kMain, {"SaveButtons1"})});
}

FormView ImportConfirmation() {
  return {.form = "dlgQDXImp",
          .content = Rows({Stretched(Fields({AtLeast(Shown({"Text1"}), kNameWidth),
                                             AtLeast(Shown({"Text2"}), kNameWidth), FileHeader(), Shown({"Combo1"}),
                                             Shown({"Combo2"}), Shown({"Combo3"}), Shown({"Combo4"})})),
                           SaveButtonsFoot()})};
}

FormView FileNamePrompt() {
  return {.form = "frmImport",
          .content = Rows({Shown({"Label1", 0}),
                           Fields({Labelled({"Label1", 1}, Browsed("Text1", "Command1")), Shown({"NumberBox1", 0}),
                                   Shown({"NumberBox1", 1}), Shown({"chkClear"})}),
                           SaveButtonsFoot()})};
}

FormView ExportOptions() {
  return {.form = "dlgExport",
          .content =
              Rows({Fields({Shown({"Combo1"}), Browsed("Text1", "Command2"), Shown({"Label2"}), Shown({"chkNonZero"})}),
                    SaveButtonsFoot()})};
}

FormView DelimitedImport() {
  return {.form = "frmDelimited",
          .content =
              Rows({Fields({Browsed("Text1", "Command1"), Shown({"cmbMath"}), Shown({"chkDate"}), Shown({"cmbDate"})}),
                    SaveButtonsFoot()})};
}

FormView SaveAsQuestion() {
  return {.form = "dlgRepSaveAs",
          .content = Rows(
              {Columns({Shown({"Picture1"}),
                        Stretched(Rows({Shown({"Label1", 0}),
                                        Fields({Labelled({"Label1", 1}, AtLeast(Shown({"Text1"}), kNameWidth))})}))}),
               Buttons({As(Role::kCancel, {"Command1", 0}), As(Role::kMain, {"Command1", 1})})})};
}

// One page of matches: `receives` names what the list over a cell chooses, `rows` what the grid shows.
Part MatchPage(Integer page, const char* receives, const char* rows) {
  Part list = Spoken(receives, Floating({"cboGridList", page}));
  list.keeps_enter = true;
  Part grid = Stretched(Spoken(rows, AtLeast(Shown({"Grid", page}), kMatchWidth, kMatchRows)));
  grid.missing = "Not to be sent";
  return Framed({"Page", page}, {list, grid, Shown({"lblNote", page})});
}

FormView Editor() {
  const Part general =
      Framed({"Page", 0}, {Stretched(Fields({Browsed("Text2", "Command2"), FileHeader(), Shown({"Combo1"}),
                                             Shown({"Combo2"}), Shown({"Combo5"}), Shown({"Combo3"})}))});
  return {.form = "frmDataExc",
          .content = Rows(
              {Fields({AtLeast(Shown({"Text1"}), kNameWidth)}),
               Stretched(Spoken("Pages", Pages({"TabStrip1"},
                                               {general, MatchPage(1, "Account in this system", "Accounts of the file"),
                                                MatchPage(2, "Datafield in this system", "Datafields of the file")}))),
               Buttons({Shown({"Command1"}), As(Role::kMain, {"SaveButtons1"})})}),
          .menus = {{"F&ile", {{"mnuFile", 0}, {"mnuFile", 1}, {}, {"mnuFile", 4}, {}, {"mnuFile", 10}}}},
          .unseen = {{"lstFields"}}};
}

Part Options(const char* name, Integer first, Integer last) {
  std::vector<Part> options;
  for (int index = first; index <= last; ++index) options.push_back(Shown({name, static_cast<Integer>(index)}));
  return Rows(options);
}

Part StylePage() {
  return Framed({"FrmPage", 1}, {Shown({"lblStyle", 0}), Options("OptStyle", 1, 3), Shown({"lblStyle", 1}),
                                 Options("OptStyle", 4, 4), Framed({"FrmTranspose"}, {Options("btnTranspose", 0, 1)})});
}

Part SequencePage() {
  return Framed({"FrmPage", 2}, {Shown({"chkNoData"}), Shown({"chkNewPage"})});
}

Part DateFrame(Integer index, const char* spoken) {
  return Framed({"frmDate", index}, {Spoken(spoken, Shown({"Calendar", index})), Shown({"DateLabel", index})});
}

Part DatePage() {
  const Part years =
      Fields({Labelled({"lblYear", 0}, Shown({"cmbYear", 0})), Labelled({"lblYear", 1}, Shown({"cmbYear", 1}))});
  const Part compare = Framed({"frmCompare"}, {Spoken("Compare with", Shown({"cmbCompareRange"})),
                                               Spoken("Compare how far", Shown({"cmbCompareType"}))});
  return Framed({"FrmPage", 3}, {Columns({Rows({years, Options("optLength", 1, 8), compare}),
                                          Stretched(Rows({Columns({DateFrame(0, "First date"), DateFrame(1, "Date")}),
                                                          Behind(Shown({"DateLabel", 2}))}))})});
}

FormView PrintDialog() {
  return {.form = "dlgRepPrint",
          .content = Rows({Stretched(Pages({}, {StylePage(), SequencePage(), DatePage()})),
                           Buttons({As(Role::kHelp, {"Command1", 0}), As(Role::kCancel, {"Command1", 1}),
                                    As(Role::kMain, {"Command1", 2}), As(Role::kBack, {"Command1", 3})})})};
}

}  // namespace

const std::vector<FormView>& AllViews() {
  static const std::vector<FormView> views = {ImportConfirmation(), FileNamePrompt(), ExportOptions(),
                                              DelimitedImport(),    SaveAsQuestion(), Editor(),
                                              PrintDialog()};
  return views;
}

const FormView& ViewOf(const Text& form) {
  const auto found = std::ranges::find(AllViews(), form, &FormView::form);
  if (found != AllViews().end()) return *found;
  throw Failure(FailureNumber::kInvalidArgument, "The form " + form + " has no view");
}

}  // namespace tallybook::views
