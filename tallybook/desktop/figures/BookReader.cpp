#include "tallybook/desktop/figures/BookReader.h"

#include <algorithm>
#include <utility>

#include "base/Narrow.h"
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
  LookAtLists();
}

void BookReader::LookAtLists() {
  found_.reset();
  if (description_ != nullptr && *description_ == book_->Description()) return;
  found_ = std::make_unique<const engine::BookDescription>(book_->Description());
  if (description_ == nullptr) {
    TakeLists();
    return;
  }
  known_fields_.clear();
  for (const engine::FieldDescription& field : found_->fields) {
    const auto known = std::ranges::find(description_->fields, field.number, &engine::FieldDescription::number);
    const bool is_known = known != description_->fields.end();
    known_fields_.push_back(is_known ? ToInteger(known - description_->fields.begin() + 1) : Integer{0});
  }
}

bool BookReader::TakeLists() {
  if (found_ == nullptr) return false;
  description_ = std::move(found_);
  calendar_ = std::make_unique<engine::Calendar>(description_->calendar, description_->data_level);
  ++lists_seen_;
  return true;
}

Date BookReader::DateOfNewestFigures(Date until) {
  Integer account = 0;
  Date newest = until;
  Read().VisitFigures({CalendarRules().FirstDate(), until, {}, {}}, [&](const engine::Figure& figure) {
    if (account == 0) account = figure.account_position;
    if (figure.account_position != account) return false;
    newest = figure.date;
    return true;
  });
  return newest;
}

void BookReader::VisitAccount(Integer account, Date first, Date last, Integer field,
                              const std::function<void(const FigureSeen&)>& visit) {
  engine::Book& book = Read();
  engine::FigureQuery query{first, last, {description_->accounts.at(static_cast<std::size_t>(account - 1)).number}, {}};
  if (field != 0) query.fields = {description_->fields.at(static_cast<std::size_t>(field - 1)).number};
  const bool is_gone = book.AccountPosition(query.accounts.front()) == 0 ||
                       (field != 0 && book.FieldPosition(query.fields.front()) == 0);
  if (is_gone) return;
  book.VisitFigures(query, [&](const engine::Figure& figure) {
    const Integer known =
        HasOtherLists() ? known_fields_[static_cast<std::size_t>(figure.field_position - 1)] : figure.field_position;
    if (known != 0) visit({figure.date, known, figure.value});
    return true;
  });
}

}  // namespace tallybook::desktop
