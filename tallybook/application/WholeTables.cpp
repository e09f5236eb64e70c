#include "tallybook/application/WholeTables.h"

#include <optional>

#include "base/Failure.h"

namespace tallybook::application {

bool WholeTables::CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                              Long& handle) {
  std::optional<Text> work;
  try {
    work = files_.BeginOf(path);
  } catch (const Failure&) {
    return false;  // the reason stands with the files
  }
  if (!library_->CreateTable(work.value_or(path), format_code, table_name, columns, handle)) return false;
  if (work) paths_[handle] = path;
  return true;
}

// A row that was not taken spoils the table: the library closes it as far as it got, without another word.
Long WholeTables::CommitRow(Long handle) {
  const Long answer = library_->CommitRow(handle);
  const auto found = paths_.find(handle);
  if (answer != kRowCommitted && found != paths_.end()) files_.SetBroken(found->second);
  return answer;
}

void WholeTables::CloseTable(Long handle) {
  const auto path = paths_.extract(handle);
  try {
    library_->CloseTable(handle);
  } catch (const Failure& failure) {
    if (path.empty()) throw;
    files_.SetBroken(path.mapped());
    throw Failure(failure.Number(), files_.WithUsersNames(failure.Description()), failure.Source());
  }
}

}  // namespace tallybook::application
