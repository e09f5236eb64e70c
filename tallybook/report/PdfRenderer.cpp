#include "tallybook/report/PdfRenderer.h"

#include <algorithm>
#include <cairo-pdf.h>
#include <cstddef>
#include <fmt/format.h>
#include <memory>
#include <pango/pangocairo.h>
#include <utility>

#include "base/Failure.h"
#include "tallybook/report/PdfModule.h"

namespace tallybook::report {

namespace {

// All lengths are points (1/72 inch). ISO 216 A4 is 210 mm by 297 mm.
constexpr double kPointsOfMillimetre = 72.0 / 25.4;
constexpr double kPageWidth = 210 * kPointsOfMillimetre;
constexpr double kPageHeight = 297 * kPointsOfMillimetre;
constexpr double kSideMargin = 18 * kPointsOfMillimetre;
constexpr double kTopMargin = 16 * kPointsOfMillimetre;
constexpr double kBodyBottom = kPageHeight - 20 * kPointsOfMillimetre;
constexpr double kFootTop = kPageHeight - 15 * kPointsOfMillimetre;
constexpr double kBodyWidth = kPageWidth - 2 * kSideMargin;

constexpr double kColumnGap = 10;
constexpr double kRowPadding = 2.5;  // above and below the text of a table's row
constexpr double kClosePadding = 0.6;
constexpr double kHeadGap = 8;   // around the rule below a page's head
constexpr double kBlockGap = 5;  // above and below a table

constexpr double kInk = 0.08;  // shades of grey, 0 black
constexpr double kSoftInk = 0.38;
constexpr double kRule = 0.25;
constexpr double kRowRule = 0.82;

struct Style {
  double size;
  PangoWeight weight;
  double shade;
};

constexpr Style kTitle{17, PANGO_WEIGHT_BOLD, kInk};
constexpr Style kPageHead{10, PANGO_WEIGHT_BOLD, kInk};
constexpr Style kBody{9, PANGO_WEIGHT_NORMAL, kInk};
constexpr Style kTableHead{9, PANGO_WEIGHT_BOLD, kInk};
constexpr Style kSmall{8, PANGO_WEIGHT_NORMAL, kSoftInk};

struct Release {
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
  void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
  void operator()(char* text) const { g_free(text); }
};
template <typename Thing>
using Owned = std::unique_ptr<Thing, Release>;

void Check(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS)
    throw Failure(FailureNumber::kInternal, Text("The PDF document cannot be made: ") + cairo_status_to_string(status),
                  "PdfRenderer");
}

// Text set in a style within a width; it breaks into lines where it is longer.
class SetText {
 public:
  SetText(cairo_t* context, const Text& text, const Style& style, double width)
      : layout_(pango_cairo_create_layout(context)), shade_(style.shade) {
    PlaceGlyphsExactly();
    const Owned<PangoFontDescription> font(pango_font_description_new());
    pango_font_description_set_family(font.get(), "DejaVu Sans, Noto Sans, sans-serif");
    pango_font_description_set_weight(font.get(), style.weight);
    pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
    pango_layout_set_font_description(layout_.get(), font.get());
    pango_layout_set_width(layout_.get(), pango_units_from_double(std::max(1.0, width)));
    pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
    const Owned<char> valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    pango_layout_set_text(layout_.get(), valid.get(), -1);
  }

  void AlignRight() { pango_layout_set_alignment(layout_.get(), PANGO_ALIGN_RIGHT); }
  void CutAt(double height) {
    pango_layout_set_height(layout_.get(), pango_units_from_double(height));
    pango_layout_set_ellipsize(layout_.get(), PANGO_ELLIPSIZE_END);
  }

  [[nodiscard]] double Height() const {
    int height = 0;
    pango_layout_get_size(layout_.get(), nullptr, &height);
    return pango_units_to_double(height);
  }

  void Draw(cairo_t* context, double x, double y) const {
    cairo_set_source_rgb(context, shade_, shade_, shade_);
    cairo_move_to(context, x, y);
    pango_cairo_show_layout(context, layout_.get());
  }

 private:
  // Glyphs would be placed on whole points otherwise, as if a point were a dot of a screen, and words would look spaced
  // out.
  void PlaceGlyphsExactly() {
    PangoContext* const context = pango_layout_get_context(layout_.get());
    const Owned<cairo_font_options_t> options(cairo_font_options_create());
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context, options.get());
    pango_context_set_round_glyph_positions(context, FALSE);
    pango_layout_context_changed(layout_.get());
  }

  Owned<PangoLayout> layout_;
  double shade_;
};

void DrawRule(cairo_t* context, double y, double thickness, double shade) {
  cairo_set_source_rgb(context, shade, shade, shade);
  cairo_set_line_width(context, thickness);
  cairo_move_to(context, kSideMargin, y);
  cairo_line_to(context, kSideMargin + kBodyWidth, y);
  cairo_stroke(context);
}

// Where the columns of a table stand on the page.
struct ColumnPlace {
  double x;
  double width;
};

std::vector<ColumnPlace> PlacesOf(const Table& table) {
  const std::vector<Single>& units = table.widths;
  const double gap = kColumnGap * std::max(0.0F, table.look.spacing);
  double total = 0;
  for (const Single unit : units) total += std::max(0.0F, unit);
  const double free = std::max(0.0, kBodyWidth - gap * static_cast<double>(units.size() - 1));
  std::vector<ColumnPlace> places;
  double x = kSideMargin;
  for (const Single unit : units) {
    const double width = total > 0 ? std::max(0.0F, unit) / total * free : 0;
    places.push_back({x, width});
    x += width + gap;
  }
  return places;
}

// The pages, recorded one after the other. They are put into the document when their number is known, for the foot
// tells it.
class Pages {
 public:
  Pages(const Report& report, const PageHeads& page_heads) : report_(report), page_heads_(page_heads) {}

  void Add(const Blocks& blocks) {
    if (pages_.empty()) Begin();
    for (auto block = blocks.begin(); block != blocks.end(); ++block) {
      const Line* const line = std::get_if<Line>(&*block);
      if (line != nullptr && line->keeps_with_next) Need(HeightWithNext(block, blocks.end()));
      std::visit([&](const auto& part) { Add(part); }, *block);
    }
  }

  [[nodiscard]] std::string Document() const;

 private:
  void Begin() {
    break_due_ = false;
    const cairo_rectangle_t sheet{0, 0, kPageWidth, kPageHeight};
    Owned<cairo_surface_t> page(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &sheet));
    context_.reset(cairo_create(page.get()));
    Check(cairo_status(context_.get()));
    pages_.push_back(std::move(page));
    y_ = kTopMargin;
    if (pages_.size() == 1) {
      Put(report_.title, kTitle);
      Put(report_.created, kSmall);
      y_ += kHeadGap;
    }
    const Blocks& head = page_heads_(static_cast<int>(pages_.size()));
    line_style_ = &kPageHead;
    in_page_head_ = true;
    for (const Block& block : head) std::visit([&](const auto& part) { Add(part); }, block);
    in_page_head_ = false;
    line_style_ = &kBody;
    y_ += kHeadGap / 2;
    DrawRule(context_.get(), y_, 0.8, kRule);
    y_ += kHeadGap;
    body_top_ = y_;
  }

  // A page's head that leaves no room is never broken off: it would ask for a further page without end.
  [[nodiscard]] bool Fits(double height) const {
    return in_page_head_ || y_ + height <= kBodyBottom || y_ <= body_top_;
  }
  void Need(double height) {
    if (break_due_ || !Fits(height)) Begin();
  }

  // How much room a line needs with what it is kept with.
  [[nodiscard]] double HeightWithNext(Blocks::const_iterator block, Blocks::const_iterator end) {
    double height = 0;
    for (; block != end; ++block) {
      const Line* const line = std::get_if<Line>(&*block);
      if (line == nullptr) break;
      height += SetText(context_.get(), line->text, kBody, kBodyWidth).Height();
      if (!line->keeps_with_next) return height;
    }
    const Table* const table = block == end ? nullptr : std::get_if<Table>(&*block);
    if (table == nullptr) return height;
    const std::vector<ColumnPlace> places = PlacesOf(*table);
    return height + kBlockGap + HeightOfStart(*table, places);
  }

  // The break is made when something follows. A page's head has none.
  void Add(const PageBreak& /*page*/) { break_due_ = !in_page_head_; }

  void Put(const Text& text, const Style& style) {
    const SetText set(context_.get(), text, style, kBodyWidth);
    set.Draw(context_.get(), kSideMargin, y_);
    y_ += set.Height();
  }

  void Add(const Line& line) {
    const SetText set(context_.get(), line.text, *line_style_, kBodyWidth);
    const double height = set.Height();
    Need(height);
    set.Draw(context_.get(), kSideMargin, y_);
    y_ += height;
  }

  struct SetRow {
    std::vector<SetText> cells;
    double padding = kRowPadding;
    double height = 0;  // with the padding
  };

  SetRow SetCells(const Cells& cells, const std::vector<ColumnPlace>& places, const Style& style,
                  double padding = kRowPadding) {
    SetRow row;
    row.padding = padding;
    const double most = (kBodyBottom - kTopMargin) / 2;
    for (std::size_t i = 0; i < places.size() && i < cells.size(); ++i) {
      row.cells.emplace_back(context_.get(), cells[i], style, places[i].width);
      if (row.cells.back().Height() > most) row.cells.back().CutAt(most);
      row.height = std::max(row.height, row.cells.back().Height());
    }
    row.height += 2 * padding;
    return row;
  }

  void Draw(const SetRow& row, const std::vector<ColumnPlace>& places) {
    for (std::size_t i = 0; i < row.cells.size(); ++i) row.cells[i].Draw(context_.get(), places[i].x, y_ + row.padding);
    y_ += row.height;
  }

  [[nodiscard]] double HeadHeight(const Table& table, const std::vector<ColumnPlace>& places) {
    double height = 0;
    for (const Cells& cells : table.head) height += SetCells(cells, places, kTableHead).height;
    return height;
  }

  // The head stays together with the first row.
  [[nodiscard]] double HeightOfStart(const Table& table, const std::vector<ColumnPlace>& places) {
    const double first = table.body.empty() ? 0 : SetCells(table.body.front(), places, kBody, PaddingOf(table)).height;
    return HeadHeight(table, places) + first;
  }

  [[nodiscard]] static double PaddingOf(const Table& table) {
    return table.look.close_rows ? kClosePadding : kRowPadding;
  }

  void DrawHead(const Table& table, const std::vector<ColumnPlace>& places) {
    if (table.head.empty()) return;
    if (table.look.ruled_head) DrawRule(context_.get(), y_, 0.8, kRule);
    for (const Cells& cells : table.head) Draw(SetCells(cells, places, kTableHead), places);
    DrawRule(context_.get(), y_, 0.8, kRule);
  }

  void Add(const Table& table) {
    const std::vector<ColumnPlace> places = PlacesOf(table);
    y_ += kBlockGap;
    Need(HeightOfStart(table, places));
    DrawHead(table, places);
    for (const Cells& cells : table.body) {
      const SetRow row = SetCells(cells, places, kBody, PaddingOf(table));
      if (!Fits(row.height)) {
        Begin();
        DrawHead(table, places);
      }
      Draw(row, places);
      if (!table.look.close_rows) DrawRule(context_.get(), y_, 0.3, kRowRule);
    }
    y_ += kBlockGap;
  }

  void DrawFoot(cairo_t* context, std::size_t page) const {
    const double half = kBodyWidth / 2;
    SetText(context, report_.title, kSmall, half).Draw(context, kSideMargin, kFootTop);
    SetText number(context, fmt::format("Page {} of {}", page, pages_.size()), kSmall, half);
    number.AlignRight();
    number.Draw(context, kSideMargin + half, kFootTop);
  }

  const Report& report_;
  const PageHeads& page_heads_;
  std::vector<Owned<cairo_surface_t>> pages_;
  Owned<cairo_t> context_;  // of the last page
  double y_ = 0;            // where the next thing goes
  double body_top_ = 0;     // where the page's body begins
  bool in_page_head_ = false;
  bool break_due_ = false;  // what comes next begins a page
  const Style* line_style_ = &kBody;
};

// Cairo's sink: appends to the string behind `closure`. Nothing may be thrown through Cairo.
cairo_status_t AppendBytes(void* closure, const unsigned char* bytes, unsigned int count) {
  try {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::exception&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

std::string Pages::Document() const {
  std::string bytes;
  {
    const Owned<cairo_surface_t> document(
        cairo_pdf_surface_create_for_stream(AppendBytes, &bytes, kPageWidth, kPageHeight));
    Check(cairo_surface_status(document.get()));
    cairo_pdf_surface_set_metadata(document.get(), CAIRO_PDF_METADATA_TITLE, report_.title.c_str());
    cairo_pdf_surface_set_metadata(document.get(), CAIRO_PDF_METADATA_CREATOR, "Tallybook");
    // Cairo takes its own clock where the text is no date of ISO 8601, and ours has a blank where that has a "T".
    Text created = report_.created;
    std::ranges::replace(created, ' ', 'T');
    cairo_pdf_surface_set_metadata(document.get(), CAIRO_PDF_METADATA_CREATE_DATE, created.c_str());
    const Owned<cairo_t> context(cairo_create(document.get()));
    for (std::size_t i = 0; i < pages_.size(); ++i) {
      cairo_set_source_surface(context.get(), pages_[i].get(), 0, 0);
      cairo_paint(context.get());
      DrawFoot(context.get(), i + 1);
      cairo_show_page(context.get());
    }
    Check(cairo_status(context.get()));
    cairo_surface_finish(document.get());
    Check(cairo_surface_status(document.get()));
  }
  return bytes;
}

}  // namespace

std::string PdfRenderer::Render(const Report& report, const PageHeads& page_heads) const {
  Pages pages(report, page_heads);
  pages.Add(report.blocks);
  return pages.Document();
}

}  // namespace tallybook::report

// The module's only way in (PdfModule.h).
extern "C" __attribute__((visibility("default"))) tallybook::report::Renderer* tallybook_make_pdf_renderer() {
  return new tallybook::report::PdfRenderer;
}
