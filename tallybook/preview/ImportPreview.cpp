#include "tallybook/preview/ImportPreview.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/Platform.h"

namespace tallybook::preview {

namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 20;
constexpr std::size_t kKeptBytes = sizeof(FigureChange);

void AddTo(ChangeTotal& total, const FigureChange& change) {
  total.field_position = change.field_position;
  total.field_number = change.field_number;
  ++total.figures;
  total.before += change.before;
  total.after += change.after;
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
  file.records = book_.VisitFile([&](const FigureChange& change) {
    ++file.figures;
    Keep(change);
    return true;
  });
}

void ImportPreview::Keep(const FigureChange& change) {
  const std::size_t at = buffer_.size();
  buffer_.resize(at + kKeptBytes);
  std::memcpy(buffer_.data() + at, &change, kKeptBytes);
  if (buffer_.size() >= kBufferBytes) FlushKept();
}

void ImportPreview::FlushKept() {
  kept_.WriteAt(kept_.Size(), buffer_);
  buffer_.clear();
}

void ImportPreview::End() {
  GiveFilesBack();
  if (!buffer_.empty()) FlushKept();
  long long figures = 0;
  records_ = book_.VisitAll([&](const FigureChange& change) {
    ++figures;
    Add(change);
    return true;
  });
  if (files_.size() == 1) {
    files_.front().figures = figures;
    files_.front().records = records_;
  } else if (!files_.empty()) {
    PreviewedFile& file = files_.back();
    file.records = book_.VisitFile([&](const FigureChange&) {
      ++file.figures;
      return true;
    });
  }
}

void ImportPreview::Add(const FigureChange& change) {
  const auto position = static_cast<std::size_t>(change.field_position);
  if (position >= totals_of_field_.size()) totals_of_field_.resize(position + 1);
  AddTo(totals_of_field_[position], change);
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
  book_.VisitFile([&](const FigureChange& change) { return visit(last, change); });
}

bool ImportPreview::VisitKept(const ChangeVisitor& visit) {
  std::vector<std::byte> block(kBufferBytes / kKeptBytes * kKeptBytes);
  std::size_t file = 0;
  long long left = files_.front().figures;
  for (long long offset = 0; offset < kept_.Size();) {
    const auto count = std::min(static_cast<long long>(block.size()), kept_.Size() - offset);
    const auto bytes = std::span(block).first(static_cast<std::size_t>(count));
    kept_.ReadAt(offset, bytes);
    offset += count;
    for (std::size_t at = 0; at < bytes.size(); at += kKeptBytes) {
      FigureChange change;
      std::memcpy(&change, bytes.data() + at, kKeptBytes);
      while (left == 0) left = files_[++file].figures;
      --left;
      if (!visit(file, change)) return false;
    }
  }
  return true;
}

void ImportPreview::VisitAccountTotals(const TotalVisitor& visit) {
  std::vector<ChangeTotal> totals;  // of the account under way, by field position
  bool go_on = true;
  const auto tell = [&] {
    for (ChangeTotal& total : totals) {
      if (total.figures != 0 && go_on) go_on = visit(total);
      total = {};
    }
    return go_on;
  };
  Integer account = 0;
  book_.VisitAll([&](const FigureChange& change) {
    if (change.account_position != account && !tell()) return false;
    account = change.account_position;
    const auto position = static_cast<std::size_t>(change.field_position);
    if (position >= totals.size()) totals.resize(position + 1);
    AddTo(totals[position], change);
    totals[position].account_position = change.account_position;
    totals[position].account_number = change.account_number;
    return true;
  });
  if (go_on) (void)tell();
}

}  // namespace tallybook::preview
