// One output that is written whole: until it is kept it stands under another name in the folder of its place, and the
// old file under its own, untouched. Whoever is killed meanwhile leaves the old file and the unfinished one, which the
// next output of that name clears away. One thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "platform/FileSystem.h"
#include "tallybook/application/FileKind.h"

namespace tallybook::application {

class WholeFile {
 public:
  // `path` as the user named it; a symbolic link's target is what will be replaced. Nothing is made yet. `files`
  // reaches the machine's files and must outlive this.
  //   fails  as LookAt does
  WholeFile(FileSystem& files, Text path);
  // Drops what was not kept.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  [[nodiscard]] const Text& Path() const { return path_; }

  // Refuses for all the reasons for which replacing the old file would be: Failure 75 for what is no regular file, 70
  // for one that may not be written, whose folder takes no new file, which is in use here or elsewhere, or which
  // belongs to another user who would not keep it. Nothing is done where there is no old file.
  void NeedReplaceable();

  // The name under which the output is to be written; the first call makes the empty file and clears away what killed
  // processes left. A second call begins anew.
  //   fails  as NeedReplaceable, and 76 folder not found, 70 the folder takes no new file, or another process is
  //          writing an output of this name, 61, 57
  const Text& Begin();
  // Where the output is being written; empty before Begin and after Keep and Drop.
  [[nodiscard]] const Text& WorkPath() const { return work_path_; }

  // The output could not be written whole, whatever else is said of it: Keep drops it.
  void SetBroken(bool broken) { broken_ = broken; }
  [[nodiscard]] bool IsBroken() const { return broken_; }

  // So many bytes more were written. The system is asked now and then to begin storing them, so that Keep waits less.
  void NoteWritten(std::size_t size);

  // Hands the output to the disk and gives it its name, with mode and owner of the old file. False, with nothing done,
  // where nothing was begun; false, with it dropped, where it is broken.
  //   fails  57, 61, 70 or 75 where the system refuses, or where the old file was replaced by others meanwhile; the
  //          output is dropped then
  bool Keep();
  // Takes away what was written. True where there was something.
  bool Drop() noexcept;

 private:
  struct Old {
    unsigned mode = 0;
    unsigned owner = 0;
    unsigned group = 0;
  };

  void LookAtOld();
  void ClearLeftovers() const;
  void MakeWorkFile();
  void TakeOwner();
  void MoveToPlace();
  void Hand();

  FileSystem& files_;
  Text path_;
  Text place_;  // the path with links followed
  FileLook old_look_;
  std::optional<Old> old_;
  Text work_path_;
  std::size_t written_ = 0;  // since the system was last asked to begin storing
  int work_ = -1;            // held as long as the output is under way
  bool broken_ = false;
};

}  // namespace tallybook::application
