#include "tallybook/report/TextRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <glib.h>
#include <string_view>

namespace tallybook::report {

namespace {

// Blanks between two columns, two where the spacing is the usual one.
int GapOf(Single spacing) {
  return 1 + static_cast<int>(std::lround(std::clamp(spacing, 0.0F, 100.0F)));
}

// One character of a UTF-8 text: its bytes and the columns it takes. A byte that is no UTF-8 counts as one character.
struct Character {
  std::size_t bytes = 0;
  int columns = 0;
  bool control = false;  // or no UTF-8
};

// The line and paragraph separators, and what turns the direction of text round.
bool BreaksOrTurns(gunichar code) {
  return (code >= 0x200E && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool IsPrintable(char byte) {
  return byte >= ' ' && byte <= '~';
}

// Of printable ASCII alone: each byte is a character that takes one column.
bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, IsPrintable);
}

Character CharacterAt(std::string_view text, std::size_t offset) {
  if (IsPrintable(text[offset])) return {1, 1};
  const gunichar code = g_utf8_get_char_validated(text.data() + offset, static_cast<gssize>(text.size() - offset));
  if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2)) return {1, 1, true};
  const auto bytes = static_cast<std::size_t>(g_unichar_to_utf8(code, nullptr));
  if (g_unichar_iscntrl(code) || BreaksOrTurns(code)) return {bytes, 1, true};
  if (g_unichar_iszerowidth(code)) return {bytes, 0};
  return {bytes, g_unichar_iswide(code) ? 2 : 1};
}

// The text with a blank for each line break and tab, and U+FFFD for each other control character and each byte that is
// no UTF-8: the report may go to a terminal.
Text Readable(const Text& text) {
  if (IsPlain(text)) return text;
  Text readable;
  for (std::size_t at = 0; at < text.size();) {
    const Character next = CharacterAt(text, at);
    if (!next.control) {
      readable += text.substr(at, next.bytes);
    } else {
      readable += g_ascii_isspace(text[at]) ? " " : "\xEF\xBF\xBD";
    }
    at += next.bytes;
  }
  return readable;
}

// How much of `text` from `offset` fits into `width` columns: the offset behind it. At least one character.
std::size_t EndOfFit(const Text& text, std::size_t offset, int width) {
  int used = 0;
  std::size_t end = offset;
  while (end < text.size()) {
    const Character next = CharacterAt(text, end);
    if (end > offset && used + next.columns > width) break;
    used += next.columns;
    end += next.bytes;
  }
  return end;
}

// The places of a table's columns on a line of `width` characters.
class Layout {
 public:
  Layout(const std::vector<Single>& units, Single spacing, int width) : gap_(GapOf(spacing)) {
    const int free = std::max(0, width - gap_ * (static_cast<int>(units.size()) - 1));
    double total = 0;
    for (const Single unit : units) total += std::max(0.0F, unit);
    double passed = 0;
    int start = 0;
    for (const Single unit : units) {
      passed += std::max(0.0F, unit);
      // Each column ends where its share of the line ends, so that the rounding does not add up.
      const int end = total > 0 ? static_cast<int>(std::lround(passed / total * free)) : start;
      widths_.push_back(std::max(1, end - start));
      start = end;
    }
  }

  void Append(const Cells& cells, std::string& out) const {
    if (FitAsTheyAre(cells)) {
      AppendLine([&](std::size_t i) { return i < cells.size() ? std::string_view(cells[i]) : ""; }, out);
      return;
    }
    std::vector<std::vector<Text>> columns;
    std::size_t height = 1;
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      columns.push_back(Wrapped(i < cells.size() ? Readable(cells[i]) : Text(), widths_[i]));
      height = std::max(height, columns.back().size());
    }
    for (std::size_t row = 0; row < height; ++row) {
      AppendLine([&](std::size_t i) { return row < columns[i].size() ? std::string_view(columns[i][row]) : ""; }, out);
    }
  }

  void AppendRule(std::string& out) const {
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      if (i > 0) out.append(static_cast<std::size_t>(gap_), ' ');
      out.append(static_cast<std::size_t>(widths_[i]), '-');
    }
    out += '\n';
  }

 private:
  // Most do; the rest takes ten times as long.
  [[nodiscard]] bool FitAsTheyAre(const Cells& cells) const {
    for (std::size_t i = 0; i < std::min(cells.size(), widths_.size()); ++i) {
      const Text& cell = cells[i];
      if (cell.size() > static_cast<std::size_t>(widths_[i]) || cell.ends_with(' ') || !IsPlain(cell)) return false;
    }
    return true;
  }

  // `text_of(i)` is what stands in column `i`.
  template <typename TextOf>
  void AppendLine(TextOf text_of, std::string& out) const {
    int missing = 0;  // blanks owed before the next text; those at the line's end are never written
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      const std::string_view text = text_of(i);
      if (!text.empty()) {
        out.append(static_cast<std::size_t>(missing), ' ');
        out += text;
        missing = 0;
      }
      missing += widths_[i] - DisplayWidth(text) + gap_;
    }
    out += '\n';
  }

  int gap_;
  std::vector<int> widths_;
};

void AppendBlock(const Line& line, int /*width*/, std::string& out) {
  out += Readable(line.text);
  out += '\n';
}

void AppendBlock(const Table& table, int width, std::string& out) {
  const Layout layout(table.widths, table.look.spacing, width);
  if (table.look.ruled_head && !table.head.empty()) layout.AppendRule(out);
  for (const Cells& row : table.head) layout.Append(row, out);
  if (!table.head.empty()) layout.AppendRule(out);
  for (const Cells& row : table.body) layout.Append(row, out);
}

// A break is the report's to print: it knows the page that follows.
void AppendBlock(const PageBreak& /*page*/, int /*width*/, std::string& /*out*/) {}

void AppendBlocks(const Blocks& blocks, int width, std::string& out) {
  for (const Block& block : blocks) std::visit([&](const auto& part) { AppendBlock(part, width, out); }, block);
}

}  // namespace

int DisplayWidth(std::string_view text) {
  if (IsPlain(text)) return static_cast<int>(text.size());
  int width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Character next = CharacterAt(text, at);
    width += next.columns;
    at += next.bytes;
  }
  return width;
}

std::vector<Text> Wrapped(const Text& text, int width) {
  std::vector<Text> lines;
  std::size_t start = 0;
  do {
    const std::size_t fit = EndOfFit(text, start, std::max(1, width));
    std::size_t end = fit;
    if (fit < text.size() && text[fit] != ' ') {
      const std::size_t blank = text.find_last_of(' ', fit - 1);
      if (blank != Text::npos && blank > start) end = blank;
    }
    const std::size_t last = text.find_last_not_of(' ', end == 0 ? 0 : end - 1);
    const bool blank_line = last == Text::npos || last < start;
    lines.push_back(blank_line ? Text() : text.substr(start, last + 1 - start));
    start = end < text.size() ? text.find_first_not_of(' ', end) : Text::npos;
  } while (start != Text::npos);
  return lines;
}

std::string TextRenderer::Render(const Report& report, const PageHeads& page_heads) const {
  const Text title = Readable(report.title);
  std::string out = title + '\n';
  out.append(static_cast<std::size_t>(DisplayWidth(title)), '=');
  out += '\n' + report.created + '\n';
  int page = 1;
  const auto begin_page = [&] {
    AppendBlocks(page_heads(page), width_, out);
    out += '\n';
  };
  begin_page();
  for (const Block& block : report.blocks) {
    if (std::holds_alternative<PageBreak>(block)) {
      out += '\f';
      ++page;
      begin_page();
    }
    std::visit([&](const auto& part) { AppendBlock(part, width_, out); }, block);
  }
  return out;
}

}  // namespace tallybook::report
