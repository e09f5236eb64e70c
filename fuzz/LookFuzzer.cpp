// The looks at files before they are imported. The first byte of the input chooses which: one of three files, and in
// the other bits the way of combining, of matching and of writing dates. What follows is the file. A look changes no
// figure, and the pieces that it parts a text file into are all of it.
#include <cstdlib>
#include <string>

#include "fuzz/FuzzHost.h"
#include "tallybook/inspect/CsvFile.h"
#include "tallybook/inspect/CsvLook.h"
#include "tallybook/inspect/DateOrders.h"
#include "tallybook/inspect/DelimitedLook.h"
#include "tallybook/inspect/PieceSplitter.h"
#include "tallybook/inspect/QdxLook.h"

namespace tallybook::fuzz {
namespace {

constexpr Long kRows = 64;  // of a definition

void Need(bool holds) {
  if (!holds) std::abort();
}

class Listener : public inspect::FindingListener {
 public:
  void Found(const inspect::Finding& finding) override {
    ++findings;
    Need(!finding.reason.empty());
  }
  void Passed(inspect::Piece piece, std::string_view bytes, bool has_findings) override {
    whole += bytes;
    splitter_.Take(piece, bytes, has_findings);
  }

  long long findings = 0;
  std::string whole;
  std::string rejects;
  std::string sound;

 private:
  inspect::PieceSplitter splitter_{[this](std::string_view bytes) { rejects += bytes; },
                                   [this](std::string_view bytes) { sound += bytes; }};
};

std::vector<std::string> FieldsOf(FuzzHost& host, const std::string& bytes) {
  host.files.Put(kFile, bytes);
  inspect::CsvFile file(kFile, TextEncoding::kDetect);
  std::vector<std::string> fields;
  while (!file.AtEnd()) fields.push_back(file.Take().bytes);
  while (!fields.empty() && fields.back().empty()) fields.pop_back();
  return fields;
}

void LookAtCsv(FuzzHost& host, unsigned choice, const std::string& bytes) {
  Listener listener;
  const inspect::LookTally tally =
      inspect::LookAtCsv(host.book, {.file = kFile, .math = static_cast<eMath>(choice % 4)}, listener);
  Need(tally.All() == listener.findings);
  Need(FieldsOf(host, listener.whole) == FieldsOf(host, bytes) || tally.records == 0);
}

void LookAtDelimited(FuzzHost& host, unsigned choice) {
  const inspect::DelimitedForm form{.date_in_one_field = choice % 2 != 0, .any_line_end = choice / 2 % 2 != 0};
  static_cast<void>(inspect::Tell(inspect::FindDateOrders(host.book, kFile, form)));
  Listener listener;
  const inspect::LookTally tally = inspect::LookAtDelimited(host.book,
                                                            {.file = kFile,
                                                             .math = eMath::mAdd,
                                                             .date_order = static_cast<Integer>(1 + choice / 4 % 3),
                                                             .system_fields = choice / 16 % 2 != 0,
                                                             .form = form},
                                                            listener);
  Need(tally.All() == listener.findings);
}

void LookAtQdx(FuzzHost& host, unsigned choice) {
  inspect::QdxLookRequest request{.file = kFile, .math = static_cast<Integer>(choice % 5)};
  request.definition.AcctMatch = static_cast<Integer>(-static_cast<int>(choice / 8 % 3));
  request.definition.AcctAll = 101;
  request.definition.FldMatch = choice / 32 % 2 != 0 ? kOneForOne : kManually;
  request.definition.Disp = kDispRename;
  request.definition.accounts.Reset(kRows);
  request.definition.fields.Reset(kRows);
  Listener listener;
  const inspect::QdxLookTally tally = inspect::LookAtQdx(host.book, request, listener);
  Need(tally.All() + tally.Of(inspect::Effect::kNote) == listener.findings);
  Need(tally.applied + tally.not_mapped == (request.math == kZeroOnly ? 0 : tally.figures));
}

}  // namespace
}  // namespace tallybook::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tallybook;
  if (size == 0) return 0;
  const unsigned choice = data[0];
  fuzz::FuzzHost host;
  const std::string bytes(fuzz::AsBytes(data + 1, size - 1));
  host.files.Put(fuzz::kFile, bytes);
  const auto before = host.book.Figures();
  switch (choice % 3) {
    case 0:
      fuzz::LookAtCsv(host, choice / 3, bytes);
      break;
    case 1:
      fuzz::LookAtDelimited(host, choice / 3);
      break;
    default:
      fuzz::LookAtQdx(host, choice / 3);
  }
  fuzz::Need(host.book.Figures() == before);
  return 0;
}
