// What a look found, as tests compare it.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tallybook/inspect/Finding.h"
#include "tallybook/inspect/PieceSplitter.h"

namespace tallybook::inspect {

inline bool operator==(const Finding& a, const Finding& b) {
  return a.line == b.line && a.record == b.record && a.column == b.column && a.column_name == b.column_name &&
         a.text == b.text && a.effect == b.effect && a.reason == b.reason && a.help == b.help && a.offset == b.offset &&
         a.account == b.account && a.date == b.date && a.field == b.field;
}

inline void PrintTo(const Finding& finding, std::ostream* out) {
  *out << "line " << finding.line << " record " << finding.record << " column " << finding.column << ' '
       << finding.column_name << " \"" << finding.text << "\" " << WordOf(finding.effect) << ": " << finding.reason
       << "; " << finding.help;
}

}  // namespace tallybook::inspect

namespace tallybook::testing {

// Keeps all findings, the file as its pieces make it up, and its two parts.
class FindingList : public inspect::FindingListener {
 public:
  FindingList() = default;
  FindingList(const FindingList&) = delete;
  FindingList& operator=(const FindingList&) = delete;

  void Found(const inspect::Finding& finding) override { findings.push_back(finding); }
  void Passed(inspect::Piece piece, std::string_view bytes, bool has_findings) override {
    whole += bytes;
    splitter_.Take(piece, bytes, has_findings);
  }

  std::vector<inspect::Finding> findings;
  std::string whole;
  std::string rejects;
  std::string sound;

 private:
  inspect::PieceSplitter splitter_{[this](std::string_view bytes) { rejects += bytes; },
                                   [this](std::string_view bytes) { sound += bytes; }};
};

}  // namespace tallybook::testing
