#include "tallybook/desktop/figures/BookReader.h"

#include <utility>

#include "tallybook/engine/BookPlace.h"

namespace tallybook::desktop {

namespace {

// A look needs little: what a table shows is kept by the table.
constexpr std::size_t kCacheBytes = std::size_t{16} << 20;

}  // namespace

BookReader::BookReader(const Text& path, HostApp& app) : path_(engine::ResolvedBookPath(path)), app_(app) {
  Open();
}

engine::Book& BookReader::Read() {
  if (book_ == nullptr) Open();
  return *book_;
}

void BookReader::Rest() {
  book_.reset();
}

BookReader::Files BookReader::StateOfFiles() const {
  Files files{engine::StateAt(path_), engine::StateAt(path_ + "-wal")};
  if (files.log.size == 0) files.log = {};
  return files;
}

// Within the step of the system's clock two changes look like one, so what was seen then is looked at once more.
bool BookReader::HasChanged() const {
  const Files now = StateOfFiles();
  if (now != seen_) return true;
  return !was_settled_ && engine::IsSettled(now.book) && engine::IsSettled(now.log);
}

void BookReader::Refresh() {
  Rest();
  Open();
}

// The state is taken first: what is committed in between shows as a change then, and is never missed.
void BookReader::Open() {
  const Files before = StateOfFiles();
  const bool settled = engine::IsSettled(before.book) && engine::IsSettled(before.log);
  engine::BookOptions options;
  options.read_only = true;
  options.cache_bytes = kCacheBytes;
  book_ = engine::Book::Open(path_, app_, options);
  if (figures_seen_ == 0 || before != seen_ || !was_settled_) ++figures_seen_;
  seen_ = before;
  was_settled_ = settled;
  TakeDescription();
}

void BookReader::TakeDescription() {
  if (description_ != nullptr && *description_ == book_->Description()) return;
  description_ = std::make_shared<const engine::BookDescription>(book_->Description());
  calendar_ = std::make_unique<engine::Calendar>(description_->calendar, description_->data_level);
  ++lists_seen_;
}

}  // namespace tallybook::desktop
