#include "tallybook/engine/JournalTables.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/BookFormat.h"

namespace tallybook::engine {

namespace {

// What stands before a mark's bits while its checksum is made, and not in the file. Both are the items of a Digest;
// there is a mark for each chunk that an import writes, so they are put together in one place that is used again.
struct MarkHead {
  std::int64_t entry;
  std::int64_t key;
  std::int64_t image;
  std::int64_t rows_size;
};

// Puts head and bits into `bytes`; gives the checksum over both.
Checksum PutMark(const MarkHead& head, std::span<const std::byte> rows, std::vector<std::byte>& bytes) {
  bytes.resize(sizeof head + rows.size());
  std::memcpy(bytes.data(), &head, sizeof head);
  std::copy(rows.begin(), rows.end(), bytes.begin() + sizeof head);
  return ChecksumOf(bytes, 0);
}

MarkHead HeadOf(Long entry, std::int64_t key, std::int64_t image, std::span<const std::byte> rows) {
  return {entry, key, image, static_cast<std::int64_t>(rows.size())};
}

Checksum TextChecksum(Long entry, const Text& name, const Text& value) {
  return Digest().Add(std::int64_t{entry}).Add(name).Add(value).Value();
}

// A size that is not known stands as -1.
Checksum FileChecksum(Long entry, std::int64_t position, const EntryFile& file) {
  Digest digest;
  digest.Add(std::int64_t{entry}).Add(position).Add(file.path).Add(file.size.value_or(-1));
  return digest.Add(std::span<const std::byte>(file.xxh3)).Add(std::span<const std::byte>(file.sha256)).Value();
}

// The name of the text that holds what the application tells of a run.
constexpr const char* kFactsText = "facts";

void BindOrNull(DbStatement& statement, int parameter, const std::vector<std::byte>& bytes) {
  if (bytes.empty()) {
    statement.BindNull(parameter);
  } else {
    statement.Bind(parameter, std::span<const std::byte>(bytes));
  }
}

std::vector<std::byte> Copied(std::span<const std::byte> bytes) {
  return {bytes.begin(), bytes.end()};
}

void CountNote(JournalRow& row, Checksum checksum) {
  ++row.notes;
  row.notes_sum += checksum;
}

}  // namespace

struct JournalTables::Statements {
  explicit Statements(Database& database)
      : insert_entry(
            database,
            "INSERT INTO journal (command, kind, time, first, last, what, state, images, undoes, chunks, marks, "
            "marks_sum, checksum, notes, notes_sum) VALUES (?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, 0, "
            "?14, "
            "?15)"),
        update_entry(database,
                     "UPDATE journal SET state = ?2, images = ?3, chunks = ?4, marks = ?5, marks_sum = ?6, "
                     "checksum = ?7, notes = ?8, notes_sum = ?9 WHERE id = ?1"),
        // Fails as any insert does, but says that it can: SQLite would set a page aside in a temporary file for each
        // image otherwise, to take back what it has done of the statement.
        copy_image(database, "INSERT OR FAIL INTO image (figures) SELECT figures FROM chunk WHERE id = ?1"),
        read_image(database, "SELECT figures FROM image WHERE id = ?1"),
        find_mark(database, "SELECT rows, image FROM journal_chunk WHERE entry = ?1 AND key = ?2"),
        insert_mark(database, "INSERT INTO journal_chunk (entry, key, rows, image) VALUES (?1, ?2, ?3, ?4)"),
        update_mark(database, "UPDATE journal_chunk SET rows = ?3, image = ?4 WHERE entry = ?1 AND key = ?2") {}

  DbStatement insert_entry;
  DbStatement update_entry;
  DbStatement copy_image;
  DbStatement read_image;
  DbStatement find_mark;
  DbStatement insert_mark;
  DbStatement update_mark;
};

Checksum CommandChecksum(Long id, Date time, const Text& what, const Text& who) {
  return Digest().Add(std::int64_t{id}).Add(time).Add(what).Add(who).Value();
}

Checksum EntryChecksum(const JournalRow& row, Long format) {
  const JournalEntry& entry = row.entry;
  Digest digest;
  digest.Add(std::int64_t{entry.id}).Add(std::int64_t{entry.command}).Add(static_cast<std::int64_t>(entry.kind));
  digest.Add(entry.time).Add(entry.first).Add(entry.last).Add(entry.what_ran);
  digest.Add(static_cast<std::int64_t>(entry.state)).Add(std::int64_t{entry.keeps_images});
  digest.Add(std::int64_t{entry.undoes}).Add(std::int64_t{entry.chunks});
  digest.Add(row.marks).Add(ToColumn(row.marks_sum));
  if (format >= kFirstFormatOfNotes) digest.Add(row.notes).Add(ToColumn(row.notes_sum));
  return digest.Value();
}

JournalTables::JournalTables(Database& database) : database_(database) {}

JournalTables::~JournalTables() = default;

JournalTables::Statements& JournalTables::Prepared() {
  if (statements_ == nullptr) statements_ = std::make_unique<Statements>(database_);
  return *statements_;
}

DbStatement& JournalTables::Prepared(std::optional<DbStatement>& statement, const char* sql) {
  if (!statement) statement.emplace(database_, sql);
  return *statement;
}

void JournalTables::FailDamaged(const Text& what) const {
  throw Failure(FailureNumber::kDeviceError, database_.Path() + ": the book is damaged: " + what, "Tallybook.Journal");
}

void JournalTables::Tell(const TroubleTaker& tell, Long entry, const Text& what) const {
  if (!tell) FailDamaged(what);
  tell(entry, what);
}

std::vector<JournalRow> JournalTables::Rows(Long format, const TroubleTaker& tell) {
  if (format == 1) return RowsOfFirstFormat();
  const bool has_notes = format >= kFirstFormatOfNotes;
  const Text columns =
      "id, command, kind, time, first, last, what, state, images, undoes, chunks, marks, marks_sum, checksum";
  DbStatement select(
      database_, ("SELECT " + columns + (has_notes ? ", notes, notes_sum" : "") + " FROM journal ORDER BY id").c_str());
  std::vector<JournalRow> rows;
  std::int64_t shown = 0;
  Long last = 0;
  while (select.Step()) {
    JournalRow& row = rows.emplace_back();
    JournalEntry& entry = row.entry;
    entry.id = ToLong(select.Int(0));
    entry.command = ToLong(select.Int(1));
    entry.kind = static_cast<JournalKind>(select.Int(2));
    entry.time = select.Real(3);
    entry.first = select.Real(4);
    entry.last = select.Real(5);
    entry.what_ran = select.String(6);
    entry.state = static_cast<JournalState>(select.Int(7));
    entry.keeps_images = select.Int(8) != 0;
    entry.undoes = ToLong(select.Int(9));
    entry.chunks = ToLong(select.Int(10));
    row.marks = select.Int(11);
    row.marks_sum = FromColumn(select.Int(12));
    row.notes = has_notes ? select.Int(14) : 0;
    row.notes_sum = has_notes ? FromColumn(select.Int(15)) : 0;
    last = entry.id;
    ++shown;
    if (EntryChecksum(row, format) != FromColumn(select.Int(13))) {
      Tell(tell, last, "journal entry " + std::to_string(last) + " does not agree with its checksum");
      rows.pop_back();
    }
  }
  // Entries are never taken away, so their numbers leave nothing out up to the last one given.
  const std::int64_t given = database_.Number("SELECT seq FROM sqlite_sequence WHERE name = 'journal'");
  if (given != shown || given != last) {
    Tell(tell, 0, "the journal shows " + std::to_string(shown) + " of " + std::to_string(given) + " entries");
  }
  return rows;
}

void JournalTables::CheckCommands(const std::function<void(const Text& what)>& tell) {
  DbStatement select(database_, "SELECT id, time, what, who, checksum FROM command ORDER BY id");
  while (select.Step()) {
    const Long id = ToLong(select.Int(0));
    if (CommandChecksum(id, select.Real(1), select.String(2), select.String(3)) == FromColumn(select.Int(4))) continue;
    tell("command " + std::to_string(id) + " does not agree with its checksum");
  }
}

std::vector<JournalRow> JournalTables::RowsOfFirstFormat() {
  DbStatement select(database_,
                     "SELECT id, time, first, last, what, state, "
                     "CASE state WHEN 0 THEN (SELECT count(*) FROM journal_chunk WHERE entry = id) ELSE chunks END "
                     "FROM journal ORDER BY id");
  std::vector<JournalRow> rows;
  while (select.Step()) {
    JournalEntry& entry = rows.emplace_back().entry;
    entry.id = ToLong(select.Int(0));
    entry.command = entry.id;
    entry.time = select.Real(1);
    entry.first = select.Real(2);
    entry.last = select.Real(3);
    entry.what_ran = select.String(4);
    entry.state = static_cast<JournalState>(select.Int(5));
    entry.chunks = ToLong(select.Int(6));
  }
  return rows;
}

std::map<Long, Text> JournalTables::Users() {
  std::map<Long, Text> users;
  DbStatement select(database_, "SELECT id, time, what, who, checksum FROM command ORDER BY id");
  while (select.Step()) {
    const Long id = ToLong(select.Int(0));
    users[id] = select.String(3);
    if (CommandChecksum(id, select.Real(1), select.String(2), users[id]) == FromColumn(select.Int(4))) continue;
    FailDamaged("command " + std::to_string(id) + " does not agree with its checksum");
  }
  return users;
}

Long JournalTables::AddCommand(Date time, const Text& what, const Text& who) {
  DbStatement insert(database_, "INSERT INTO command (time, what, who, checksum) VALUES (?1, ?2, ?3, 0)");
  insert.Bind(1, time).Bind(2, what).Bind(3, who).Run();
  const Long id = ToLong(database_.LastRow());
  DbStatement update(database_, "UPDATE command SET checksum = ?2 WHERE id = ?1");
  update.Bind(1, std::int64_t{id}).Bind(2, ToColumn(CommandChecksum(id, time, what, who))).Run();
  return id;
}

void JournalTables::Save(JournalRow& row) {
  JournalEntry& entry = row.entry;
  if (entry.id == 0) {
    DbStatement& insert = Prepared().insert_entry;
    insert.Bind(2, std::int64_t{entry.command}).Bind(3, static_cast<std::int64_t>(entry.kind));
    insert.Bind(4, entry.time).Bind(5, entry.first).Bind(6, entry.last).Bind(7, entry.what_ran);
    insert.Bind(8, static_cast<std::int64_t>(entry.state)).Bind(9, std::int64_t{entry.keeps_images});
    insert.Bind(10, std::int64_t{entry.undoes}).Bind(11, std::int64_t{entry.chunks}).Bind(12, row.marks);
    insert.Bind(13, ToColumn(row.marks_sum)).Bind(14, row.notes).Bind(15, ToColumn(row.notes_sum)).Run();
    entry.id = ToLong(database_.LastRow());
  }
  // The checksum holds the number that a new entry is given only now.
  DbStatement& update = Prepared().update_entry;
  update.Bind(1, std::int64_t{entry.id}).Bind(2, static_cast<std::int64_t>(entry.state));
  update.Bind(3, std::int64_t{entry.keeps_images}).Bind(4, std::int64_t{entry.chunks}).Bind(5, row.marks);
  update.Bind(6, ToColumn(row.marks_sum)).Bind(7, ToColumn(EntryChecksum(row, kBookFormat)));
  update.Bind(8, row.notes).Bind(9, ToColumn(row.notes_sum)).Run();
}

void JournalTables::SaveText(JournalRow& row, const Text& name, const Text& value) {
  const Long entry = row.entry.id;
  const Checksum checksum = TextChecksum(entry, name, value);
  DbStatement insert(database_, "INSERT INTO journal_text (entry, name, value, checksum) VALUES (?1, ?2, ?3, ?4)");
  insert.Bind(1, std::int64_t{entry}).Bind(2, name).Bind(3, value).Bind(4, ToColumn(checksum)).Run();
  CountNote(row, checksum);
}

std::optional<Text> JournalTables::FindText(Long entry, const Text& name) {
  DbStatement select(database_, "SELECT value, checksum FROM journal_text WHERE entry = ?1 AND name = ?2");
  if (!select.Bind(1, std::int64_t{entry}).Bind(2, name).Step()) return std::nullopt;
  return CheckedText(entry, name, select);
}

Text JournalTables::CheckedText(Long entry, const Text& name, const DbStatement& statement) const {
  Text value = statement.String(0);
  if (TextChecksum(entry, name, value) != FromColumn(statement.Int(1))) {
    FailDamaged("the " + name + " of journal entry " + std::to_string(entry) + " does not agree with its checksum");
  }
  return value;
}

std::map<Long, Text> JournalTables::TextsNamed(const Text& name) {
  DbStatement select(database_, "SELECT value, checksum, entry FROM journal_text WHERE name = ?1 ORDER BY entry");
  select.Bind(1, name);
  std::map<Long, Text> texts;
  while (select.Step()) {
    const Long entry = ToLong(select.Int(2));
    texts[entry] = CheckedText(entry, name, select);
  }
  return texts;
}

Text JournalTables::TextOf(Long entry, const Text& name) {
  std::optional<Text> value = FindText(entry, name);
  if (!value) FailDamaged("the " + name + " of journal entry " + std::to_string(entry) + " is missing");
  return std::move(*value);
}

std::span<const std::byte> JournalTables::ReadImage(std::int64_t image) {
  DbStatement& read = Prepared().read_image;
  const EndOfWalk end(read);
  if (!read.Bind(1, image).Step()) FailDamaged("an image of the journal is missing");
  const auto bytes = read.Bytes(0);
  image_bytes_.assign(bytes.begin(), bytes.end());
  return image_bytes_;
}

std::map<Text, Text> JournalTables::TextsOf(JournalRow& seen) {
  const Long entry = seen.entry.id;
  DbStatement& select =
      Prepared(texts_of_, "SELECT name, value, checksum FROM journal_text WHERE entry = ?1 ORDER BY name");
  const EndOfWalk end(select);
  select.Bind(1, std::int64_t{entry});
  std::map<Text, Text> texts;
  while (select.Step()) {
    const Text name = select.String(0);
    const Checksum checksum = TextChecksum(entry, name, texts[name] = select.String(1));
    if (checksum != FromColumn(select.Int(2))) {
      FailDamaged("the " + name + " of journal entry " + std::to_string(entry) + " does not agree with its checksum");
    }
    CountNote(seen, checksum);
  }
  return texts;
}

std::vector<EntryFile> JournalTables::FilesOf(JournalRow& seen) {
  const Long entry = seen.entry.id;
  DbStatement& select = Prepared(
      files_of_,
      "SELECT position, path, size, xxh3, sha256, checksum FROM journal_file WHERE entry = ?1 ORDER BY position");
  const EndOfWalk end(select);
  select.Bind(1, std::int64_t{entry});
  std::vector<EntryFile> files;
  while (select.Step()) {
    EntryFile& file = files.emplace_back();
    file.path = select.String(1);
    if (!select.IsNull(2)) file.size = select.Int(2);
    file.xxh3 = Copied(select.Bytes(3));
    file.sha256 = Copied(select.Bytes(4));
    const Checksum checksum = FileChecksum(entry, select.Int(0), file);
    if (checksum != FromColumn(select.Int(5))) {
      FailDamaged("a file of journal entry " + std::to_string(entry) + " does not agree with its checksum");
    }
    CountNote(seen, checksum);
  }
  return files;
}

std::vector<EntryFile> JournalTables::FilesOf(Long entry) {
  JournalRow seen;
  seen.entry.id = entry;
  return FilesOf(seen);
}

EntryNotes JournalTables::NotesOf(const JournalRow& row) {
  JournalRow seen;
  seen.entry.id = row.entry.id;
  EntryNotes notes;
  std::map<Text, Text> texts = TextsOf(seen);
  notes.facts = std::move(texts[kFactsText]);
  notes.files = FilesOf(seen);
  if (seen.notes != row.notes || seen.notes_sum != row.notes_sum) {
    FailDamaged("journal entry " + std::to_string(row.entry.id) + " shows " + std::to_string(seen.notes) +
                " texts and files of " + std::to_string(row.notes));
  }
  return notes;
}

void JournalTables::CountTexts(JournalRow& row) {
  static_cast<void>(TextsOf(row));
}

// What the entry keeps of another kind stays, and its count with it.
void JournalTables::DropNotes(JournalRow& row) {
  DropText(row, kFactsText);
  DropCounted(row, "journal_file WHERE entry = ?1");
}

void JournalTables::DropText(JournalRow& row, const Text& name) {
  DropCounted(row, "journal_text WHERE entry = ?1 AND name = '" + name + "'");
}

void JournalTables::DropCounted(JournalRow& row, const Text& from_where) {
  DbStatement select(database_, ("SELECT checksum FROM " + from_where).c_str());
  select.Bind(1, std::int64_t{row.entry.id});
  while (select.Step()) {
    --row.notes;
    row.notes_sum -= FromColumn(select.Int(0));
  }
  select.Reset();
  DbStatement(database_, ("DELETE FROM " + from_where).c_str()).Bind(1, std::int64_t{row.entry.id}).Run();
}

void JournalTables::SaveFile(JournalRow& row, std::int64_t position, const EntryFile& file) {
  const Long entry = row.entry.id;
  const Checksum checksum = FileChecksum(entry, position, file);
  DbStatement insert(database_,
                     "INSERT INTO journal_file (entry, position, path, size, xxh3, sha256, checksum) "
                     "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  insert.Bind(1, std::int64_t{entry}).Bind(2, position).Bind(3, file.path);
  if (file.size) {
    insert.Bind(4, *file.size);
  } else {
    insert.BindNull(4);
  }
  BindOrNull(insert, 5, file.xxh3);
  BindOrNull(insert, 6, file.sha256);
  insert.Bind(7, ToColumn(checksum)).Run();
  CountNote(row, checksum);
}

void JournalTables::SaveNotes(JournalRow& row, const EntryNotes& notes) {
  DropNotes(row);
  if (!notes.facts.empty()) SaveText(row, kFactsText, notes.facts);
  std::int64_t position = 0;
  for (const EntryFile& file : notes.files) SaveFile(row, ++position, file);
}

std::int64_t JournalTables::CopyImage(std::int64_t chunk_row) {
  Prepared().copy_image.Bind(1, chunk_row).Run();
  return database_.LastRow();
}

ChunkMark JournalTables::CheckedMark(Long entry, std::int64_t key, const DbStatement& statement, int column) {
  const auto bytes = statement.Bytes(column);
  ChunkMark mark;
  mark.image = statement.Int(column + 1);
  if (bytes.size() >= kChecksumSize) {
    const auto rows = bytes.first(bytes.size() - kChecksumSize);
    mark.rows.assign(rows.begin(), rows.end());
    std::memcpy(&mark.checksum, bytes.data() + rows.size(), kChecksumSize);
  }
  if (bytes.size() < kChecksumSize ||
      mark.checksum != PutMark(HeadOf(entry, key, mark.image, mark.rows), mark.rows, bytes_)) {
    FailDamaged("what journal entry " + std::to_string(entry) + " changed does not agree with its checksum");
  }
  return mark;
}

std::optional<ChunkMark> JournalTables::FindMark(Long entry, std::int64_t key) {
  DbStatement& find = Prepared().find_mark;
  const EndOfWalk end(find);
  if (!find.Bind(1, std::int64_t{entry}).Bind(2, key).Step()) return std::nullopt;
  return CheckedMark(entry, key, find, 0);
}

Checksum JournalTables::WriteMark(DbStatement& statement, Long entry, std::int64_t key, std::span<const std::byte> rows,
                                  std::int64_t image) {
  const Checksum checksum = PutMark(HeadOf(entry, key, image, rows), rows, bytes_);
  bytes_.resize(bytes_.size() + kChecksumSize);
  std::memcpy(bytes_.data() + bytes_.size() - kChecksumSize, &checksum, kChecksumSize);
  statement.Bind(1, std::int64_t{entry}).Bind(2, key);
  statement.Bind(3, std::span<const std::byte>(bytes_).subspan(sizeof(MarkHead)));
  if (image != 0) {
    statement.Bind(4, image);
  } else {
    statement.BindNull(4);
  }
  statement.Run();
  return checksum;
}

Checksum JournalTables::InsertMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image) {
  return WriteMark(Prepared().insert_mark, entry, key, rows, image);
}

Checksum JournalTables::UpdateMark(Long entry, std::int64_t key, std::span<const std::byte> rows, std::int64_t image) {
  return WriteMark(Prepared().update_mark, entry, key, rows, image);
}

void JournalTables::WalkMarks(DbStatement& walk, const JournalRow& row, const MarkBitsVisitor& visit) {
  const Long entry = row.entry.id;
  walk.Bind(1, std::int64_t{entry});
  std::int64_t marks = 0;
  std::uint64_t marks_sum = 0;
  while (walk.Step()) {
    const std::int64_t key = walk.Int(0);
    const ChunkMark mark = CheckedMark(entry, key, walk, 1);
    ++marks;
    marks_sum += mark.checksum;
    visit(key, mark);
  }
  if (marks != row.marks || marks_sum != row.marks_sum) {
    FailDamaged("journal entry " + std::to_string(entry) + " shows " + std::to_string(marks) + " changed chunks of " +
                std::to_string(row.marks));
  }
}

bool JournalTables::VisitMark(Long entry, std::int64_t key, const MarkVisitor& visit) {
  DbStatement& select = Prepared(visit_mark_,
                                 "SELECT rows, image, figures FROM journal_chunk LEFT JOIN image ON image.id = "
                                 "journal_chunk.image WHERE entry = ?1 AND key = ?2");
  const EndOfWalk end(select);
  if (!select.Bind(1, std::int64_t{entry}).Bind(2, key).Step()) return false;
  const ChunkMark mark = CheckedMark(entry, key, select, 0);
  if (mark.image != 0 && select.IsNull(2)) {
    FailDamaged("an image of journal entry " + std::to_string(entry) + " is missing");
  }
  visit(key, mark, select.Bytes(2));
  return true;
}

void JournalTables::DropImages(JournalRow& row) {
  const Long entry = row.entry.id;
  std::vector<std::pair<std::int64_t, ChunkMark>> marks;
  VisitMarkBits(row, [&](std::int64_t key, const ChunkMark& mark) { marks.emplace_back(key, mark); });
  DbStatement drop(database_, "DELETE FROM image WHERE id = ?1");
  for (const auto& [key, mark] : marks) {
    if (mark.image == 0) continue;
    drop.Bind(1, mark.image).Run();
    row.marks_sum += UpdateMark(entry, key, mark.rows, 0) - mark.checksum;
  }
  row.entry.keeps_images = false;
}

void JournalTables::VisitMarks(const JournalRow& row, const MarkVisitor& visit) {
  DbStatement walk(
      database_,
      "SELECT key, rows, image, figures FROM journal_chunk LEFT JOIN image ON image.id = journal_chunk.image "
      "WHERE entry = ?1 ORDER BY key");
  WalkMarks(walk, row, [&](std::int64_t key, const ChunkMark& mark) {
    if (mark.image != 0 && walk.IsNull(3)) {
      FailDamaged("an image of journal entry " + std::to_string(row.entry.id) + " is missing");
    }
    visit(key, mark, walk.Bytes(3));
  });
}

void JournalTables::VisitMarkBits(const JournalRow& row, const MarkBitsVisitor& visit) {
  DbStatement walk(database_, "SELECT key, rows, image FROM journal_chunk WHERE entry = ?1 ORDER BY key");
  WalkMarks(walk, row, visit);
}

}  // namespace tallybook::engine
