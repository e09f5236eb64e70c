#include "tallybook/preview/ImportPreview.h"

#include <algorithm>
#include <utility>

#include "platform/Platform.h"

namespace tallybook::preview {

namespace {

ChangeTotal& TotalAt(std::vector<ChangeTotal>& totals, Integer field_position, Integer field_number) {
  const auto position = static_cast<std::size_t>(field_position);
  if (position >= totals.size()) totals.resize(position + 1);
  totals[position].field_position = field_position;
  totals[position].field_number = field_number;
  return totals[position];
}

// That has no figures yet.
ChangeTotal TotalOf(const FigureChange& change) {
  ChangeTotal total;
  total.account_position = change.account_position;
  total.account_number = change.account_number;
  total.field_position = change.field_position;
  total.field_number = change.field_number;
  return total;
}

}  // namespace

ImportPreview::ImportPreview(const Means& means)
    : book_(means.book, means.factory, means.app, means.cache_bytes),
      files_before_(ThePlatform().files),
      overlay_files_(*files_before_, means.need_removable) {
  ThePlatform().files = &overlay_files_;
}

ImportPreview::~ImportPreview() {
  GiveFilesBack();
}

void ImportPreview::GiveFilesBack() {
  if (IsPlatformInstalled() && ThePlatform().files == &overlay_files_) ThePlatform().files = files_before_;
}

void ImportPreview::BeginFile(const Text& name) {
  if (!files_.empty()) {
    EndFile();
    book_.BeginFile();
  }
  files_.push_back({.name = name});
}

// The next file's changes take the place of this one's in the overlay.
void ImportPreview::EndFile() {
  PreviewedFile& file = files_.back();
  file.records = book_.VisitFile([&](std::span<const FigureChange> changes) {
    file.figures += static_cast<long long>(changes.size());
    kept_.Add(changes);
    return true;
  });
}

void ImportPreview::End() {
  GiveFilesBack();
  long long figures = 0;
  records_ = book_.VisitAll([&](std::span<const FigureChange> changes) {
    figures += static_cast<long long>(changes.size());
    Add(changes);
    return true;
  });
  EndAccount();
  if (files_.size() == 1) {
    files_.front().figures = figures;
    files_.front().records = records_;
  } else if (!files_.empty()) {
    PreviewedFile& file = files_.back();
    file.records = book_.VisitFile([&](std::span<const FigureChange> changes) {
      file.figures += static_cast<long long>(changes.size());
      return true;
    });
  }
}

void ImportPreview::Add(std::span<const FigureChange> of_record) {
  if (of_record.front().account_position != account_position_) EndAccount();
  account_position_ = of_record.front().account_position;
  const auto last_position = static_cast<std::size_t>(of_record.back().field_position);
  if (last_position >= of_account_.size()) of_account_.resize(last_position + 1);
  for (const FigureChange& change : of_record) {
    ChangeTotal& total = of_account_[static_cast<std::size_t>(change.field_position)];
    if (total.figures == 0) total = TotalOf(change);
    ++total.figures;
    total.before += change.before;
    total.after += change.after;
  }
}

// Its totals go into those of all accounts.
void ImportPreview::EndAccount() {
  for (ChangeTotal& of_account : of_account_) {
    if (of_account.figures == 0) continue;
    account_totals_.Add(of_account);
    ChangeTotal& total = TotalAt(totals_of_field_, of_account.field_position, of_account.field_number);
    total.figures += of_account.figures;
    total.before += of_account.before;
    total.after += of_account.after;
    of_account = {};
  }
}

std::vector<ChangeTotal> ImportPreview::FieldTotals() const {
  std::vector<ChangeTotal> totals;
  std::ranges::copy_if(totals_of_field_, std::back_inserter(totals),
                       [](const ChangeTotal& total) { return total.figures != 0; });
  return totals;
}

FileFate ImportPreview::FateOf(const Text& path) const {
  FileFate fate;
  const std::vector<FileDeed>& deeds = overlay_files_.Deeds();
  for (const FileDeed& deed : deeds) {
    if (deed.path != path) continue;
    if (deed.kind == FileDeedKind::kDeleted) fate = {.kind = FileFate::Kind::kDeleted};
    if (deed.kind == FileDeedKind::kRenamed) {
      const bool replaces = std::ranges::any_of(deeds, [&](const FileDeed& other) {
        return other.kind == FileDeedKind::kDeleted && other.path == deed.new_path;
      });
      fate = {.kind = FileFate::Kind::kRenamed, .new_path = deed.new_path, .replaces = replaces};
    }
  }
  return fate;
}

void ImportPreview::VisitChanges(const ChangeVisitor& visit) {
  if (files_.empty() || !VisitKept(visit)) return;
  const std::size_t last = files_.size() - 1;
  book_.VisitFile([&](std::span<const FigureChange> changes) {
    return std::ranges::all_of(changes, [&](const FigureChange& change) { return visit(last, change); });
  });
}

bool ImportPreview::VisitKept(const ChangeVisitor& visit) {
  std::size_t file = 0;
  long long left = files_.front().figures;
  return kept_.VisitEach([&](const FigureChange& change) {
    while (left == 0) left = files_[++file].figures;
    --left;
    return visit(file, change);
  });
}

void ImportPreview::VisitAccountTotals(const TotalVisitor& visit) const {
  static_cast<void>(account_totals_.VisitEach(visit));
}

}  // namespace tallybook::preview
