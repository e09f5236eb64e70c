#include "tallybook/report/HtmlRenderer.h"

#include <algorithm>
#include <fmt/format.h>
#include <glib.h>
#include <memory>

namespace tallybook::report {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --ink: #1c2024; --paper: #ffffff; --soft: #5b6470; --line: #c9d0d8; --band: #f3f5f8; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e4e8ed; --paper: #14181d; --soft: #9aa5b1; --line: #3a444f; --band: #1d232a; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 2rem 1.25rem; max-width: 60rem; color: var(--ink); background: var(--paper);
       font: 0.95rem/1.45 system-ui, "Segoe UI", "DejaVu Sans", sans-serif; }
header { border-bottom: 2px solid var(--line); margin-bottom: 1.25rem; padding-bottom: 0.75rem; }
h1 { font-size: 1.45rem; margin: 0 0 0.25rem; }
p { margin: 0; min-height: 1.45em; white-space: pre-wrap; overflow-wrap: anywhere; }
.created { color: var(--soft); font-size: 0.85rem; }
table { width: 100%; table-layout: fixed; border-collapse: collapse; margin: 0.25rem 0 1rem; }
th, td { text-align: left; vertical-align: top; padding: 0.3rem calc(0.3rem + 0.3rem * var(--gap, 1)); white-space: pre-wrap; overflow-wrap: anywhere; }
thead tr:last-child th { border-bottom: 2px solid var(--soft); }
tbody tr { border-bottom: 1px solid var(--line); }
tbody tr:nth-child(even) { background: var(--band); }
table.close td { padding-top: 0.05rem; padding-bottom: 0.05rem; }
table.close tbody tr:nth-child(n) { border: none; background: none; }
table.ruled thead tr:first-child th { border-top: 2px solid var(--soft); }
hr.page { border: none; border-top: 1px dashed var(--line); margin: 2rem 0; }
@page { size: A4; margin: 18mm 16mm; }
@media print {
  :root { --ink: #000000; --paper: #ffffff; --soft: #444444; --line: #999999; --band: transparent; }
  body { max-width: none; padding: 0; font-size: 9.5pt; }
  thead { display: table-header-group; }
  tr { break-inside: avoid; }
  p.kept { break-after: avoid; }
  hr.page { break-after: page; border: none; margin: 0; }
}
)";

void AppendCells(const Cells& cells, std::string_view tag, std::string_view attributes, std::string& out) {
  out += "<tr>";
  for (const Text& cell : cells) out += fmt::format("<{}{}>{}</{}>", tag, attributes, HtmlEscaped(cell), tag);
  out += "</tr>\n";
}

void AppendBlock(const Line& line, std::string& out) {
  out += fmt::format("<p{}>{}</p>\n", line.keeps_with_next ? " class=\"kept\"" : "", HtmlEscaped(line.text));
}

void AppendBlock(const PageBreak& /*page*/, std::string& out) {
  out += "<hr class=\"page\">\n";
}

// What the start of a table says of a look that is not the usual one.
std::string LookAttributes(const TableLook& look) {
  std::string attributes;
  if (look.close_rows || look.ruled_head) {
    attributes = fmt::format(" class=\"{}{}{}\"", look.close_rows ? "close" : "",
                             look.close_rows && look.ruled_head ? " " : "", look.ruled_head ? "ruled" : "");
  }
  if (look.spacing != 1) attributes += fmt::format(" style=\"--gap: {:g}\"", std::max(0.0F, look.spacing));
  return attributes;
}

void AppendBlock(const Table& table, std::string& out) {
  double total = 0;
  for (const Single width : table.widths) total += std::max(0.0F, width);
  out += fmt::format("<table{}>\n<colgroup>", LookAttributes(table.look));
  for (const Single width : table.widths)
    out += fmt::format("<col style=\"width: {:.2f}%\">", total > 0 ? std::max(0.0F, width) / total * 100 : 0.0);
  out += "</colgroup>\n";
  if (!table.head.empty()) {
    out += "<thead>\n";
    for (const Cells& row : table.head) AppendCells(row, "th", " scope=\"col\"", out);
    out += "</thead>\n";
  }
  out += "<tbody>\n";
  for (const Cells& row : table.body) AppendCells(row, "td", "", out);
  out += "</tbody>\n</table>\n";
}

void AppendBlocks(const Blocks& blocks, std::string& out) {
  for (const Block& block : blocks) std::visit([&](const auto& part) { AppendBlock(part, out); }, block);
}

bool IsForbiddenControl(char c) {
  const auto code = static_cast<unsigned char>(c);
  return (code < 0x20 && c != '\t' && c != '\n') || code == 0x7F;
}

}  // namespace

std::string HtmlEscaped(const Text& text) {
  const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())),
                                                       &g_free);
  std::string out;
  out.reserve(text.size());
  for (const char* at = valid.get(); *at != '\0'; ++at) {
    switch (*at) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        if (IsForbiddenControl(*at)) {
          out += kReplacement;
        } else {
          out += *at;
        }
    }
  }
  return out;
}

std::string HtmlRenderer::Render(const Report& report, const PageHeads& page_heads) const {
  const std::string title = HtmlEscaped(report.title);
  std::string out = fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>{}</title>\n"
      "<style>{}</style>\n</head>\n<body>\n<header>\n<h1>{}</h1>\n",
      title, kStyle, title);
  AppendBlocks(page_heads(1), out);
  out += fmt::format("<p class=\"created\">{}</p>\n</header>\n<main>\n", HtmlEscaped(report.created));
  AppendBlocks(report.blocks, out);
  out += "</main>\n</body>\n</html>\n";
  return out;
}

}  // namespace tallybook::report
