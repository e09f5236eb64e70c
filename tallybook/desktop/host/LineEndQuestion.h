// A look at the text file of a delimited import before it is read: where its lines end in a way that the import does
// not take for their ends, the user is asked whether they are to be read all the same (application/LineEnds.h). A layer
// for the time of a conversation: it stands over the installed platform's files and is taken out by its end. One
// thread.
#pragma once

#include <map>
#include <memory>

#include "tallybook/application/FileLayer.h"
#include "tallybook/application/LineEnds.h"

namespace tallybook::desktop {

class LineEndQuestion : public application::FileLayer {
 public:
  // The platform is installed and stays so.
  LineEndQuestion();
  ~LineEndQuestion() override;
  LineEndQuestion(const LineEndQuestion&) = delete;
  LineEndQuestion& operator=(const LineEndQuestion&) = delete;

  // Whether the lines of a file end in a way that it is asked about. Asks nobody.
  [[nodiscard]] bool IsAskedAbout(const Text& path);

  // Each file is asked about once. Failure 75 with the reason where the user does not want it read.
  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;

 private:
  void Ask(const Text& path);

  FileSystem& before_;
  bool looks_ = false;                 // at the file that is being opened
  std::map<Text, bool> read_any_end_;  // by path: what was answered
};

}  // namespace tallybook::desktop
