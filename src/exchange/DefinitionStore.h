// The list of exchange definitions of a database, and the one among them that is open. Definitions are kept one to a
// file beside the database: the data path, "TBQDX", the number, ".", the database's extension. Nothing here touches
// figures.
//
// The list has positions 0 to 999 while it is loaded, 0 alone otherwise; position 0 holds nothing. A position outside
// it is failure 9, and so is a row outside a table. Deleted entries leave holes; callers load the list again after a
// deletion, as a new entry's position comes from the counter. Nothing is written before Add or Update.
#pragma once

#include <vector>

#include "base/Types.h"
#include "import/DefinitionRecord.h"
#include "qdx/HeaderRecord.h"

namespace tallybook {

class Masterfile;

// The position that stands for the selected definition.
inline constexpr Integer kSelected = -1;
// The most definitions, and the highest number in a definition's file name.
inline constexpr Integer kMaxDefinitions = 999;

class DefinitionStore {
 public:
  struct Entry {
    Text Desc;            // title
    Integer FileNum = 0;  // the number in the file's name
    Text Filename;        // full path of the definition's file
    Text QdxFileName;     // the exchange file that it imports, wildcards allowed
  };

  // Loads the list for `masterfile`, which must outlive the store's use of it. Older definitions ("KVQDX") are
  // converted first where there is no definition of the newer kind at all; what cannot be converted is told by message.
  // A file that cannot be read leaves an entry with the title and source of the definition read before it.
  // A number that does not fit 16 bits counts as none: its file is listed with FileNum 0, an older one not converted.
  // Fails with failure 9 for the thousandth file.
  void Load(Masterfile& masterfile);
  [[nodiscard]] bool IsLoaded() const { return entries_.size() > 1; }
  // Leaves position 0 alone. The counter stays: meant.
  void Discard();

  // The counter of definitions: raised by Load and Add, lowered by Delete.
  [[nodiscard]] Integer Count() const { return count_; }

  [[nodiscard]] Integer Selected() const { return selected_; }
  // Selects an entry and reads its file, or clears the open definition where there is none.
  void Select(Integer position, Masterfile& masterfile);

  // An entry; kSelected is the selected one.
  [[nodiscard]] Entry& At(Integer position);
  [[nodiscard]] const Entry& At(Integer position) const;
  // Sets an entry's title, and the open definition's where the entry is the selected one.
  void SetDesc(Integer position, const Text& title);

  // The open definition.
  [[nodiscard]] DefinitionRecord& Current() { return current_; }
  [[nodiscard]] const DefinitionRecord& Current() const { return current_; }
  // Clears the open definition for a new one: renamed after import, tables as large as the database's limits.
  void Clear(Masterfile& masterfile);

  // Writes the open definition to an entry's file, with title and source from the entry; account rows take their
  // from-codes from `header` at their positions, so the header of an exchange file must be in memory. A failure is
  // asked about, "Error creating file: " and the name: Retry starts over, Cancel deletes the file and gives false. Its
  // reason is logged with " - CDataExchange:Add" or ":Update". Add counts the entry too.
  [[nodiscard]] bool Add(Integer position, Masterfile& masterfile, const HeaderRecord& header);
  [[nodiscard]] bool Update(Integer position, Masterfile& masterfile, const HeaderRecord& header);
  // Deletes an entry's file and blanks the entry. False, with the list as it was, where the file cannot be deleted.
  [[nodiscard]] bool Delete(Integer position);

  // Reserves the lowest file number that is free, without regard to the case of names, and the entry behind the last
  // counted one; gives its position, 0 where all 999 numbers are taken. The counter stays.
  [[nodiscard]] Integer FirstAvailRec(const Masterfile& masterfile);
  // The position of a title, 0 if absent. `title` is trimmed and put into upper case, for the caller too; stored titles
  // are compared in upper case, untrimmed. An empty title finds the first unused entry. Meant, all three.
  [[nodiscard]] Integer Find(Text& title) const;

 private:
  [[nodiscard]] std::size_t IndexOf(Integer position) const;
  void ConvertOlderFiles(Masterfile& masterfile);
  [[nodiscard]] bool Write(Integer position, Masterfile& masterfile, const HeaderRecord& header, const Text& operation);

  std::vector<Entry> entries_ = std::vector<Entry>(1);
  Integer count_ = 0;
  Integer selected_ = 0;
  DefinitionRecord current_;
};

// The full name of the definition file of a number.
[[nodiscard]] Text DefinitionFileName(const Masterfile& masterfile, Integer number);

}  // namespace tallybook
