// Whether a file could be deleted or renamed: the answer is the system's, and the file stays.
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/FileNumber.h"
#include "support/Utility.h"
#include "tallybook/application/FileRemoval.h"
#include "tests/support/FailsWith.h"
#include "tests/support/InChild.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;
using ::testing::HasSubstr;

class FileRemovalTest : public ::testing::Test {
 protected:
  FileRemovalTest() { folder_.Write("a.QDX", "one"); }
  [[nodiscard]] Text Path() const { return folder_.Path("a.QDX"); }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
};

TEST_F(FileRemovalTest, AFileThatNobodyHoldsCanGo) {
  NeedRemovable(platform_.files, Path());
  EXPECT_EQ(folder_.Read("a.QDX"), "one");
}

TEST_F(FileRemovalTest, AFileThatIsOpenStays) {
  FileNumber file;
  Text name = Path();
  ASSERT_TRUE(OpenFileEx("BR", file.Value(), name));
  EXPECT_THAT([&] { NeedRemovable(platform_.files, Path()); }, FailsWith(FailureNumber::kPermissionDenied));
}

TEST_F(FileRemovalTest, AFileThatAnotherProcessHoldsStays) {
  const testing::OtherProcess other("BR", Path());
  EXPECT_THAT([&] { NeedRemovable(platform_.files, Path()); }, FailsWith(FailureNumber::kPermissionDenied));
}

TEST_F(FileRemovalTest, AFolderStays) {
  EXPECT_THAT([&] { NeedRemovable(platform_.files, folder_.Path()); }, FailsWith(FailureNumber::kPathOrAccess));
}

TEST_F(FileRemovalTest, AFolderThatIsLockedKeepsItsFiles) {
  constexpr uid_t kSomebody = 65'534;
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0755), 0);
  const auto as_somebody = [&](const std::function<void()>& act) {
    return testing::InChild([&] {
      if (::geteuid() == 0 && ::seteuid(kSomebody) != 0) throw Failure(FailureNumber::kInternal, "no other user");
      act();
    });
  };
  if (::geteuid() != 0) {
    ASSERT_EQ(::chmod(folder_.Path().c_str(), 0555), 0);
  }
  EXPECT_THAT(as_somebody([&] { NeedRemovable(platform_.files, Path()); }), HasSubstr("does not let it go"));
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0755), 0);
}

}  // namespace
}  // namespace tallybook::application
