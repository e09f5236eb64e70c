// What a path leads to, on the files of the machine.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include "tallybook/application/FileKind.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;

class FileKindTest : public ::testing::Test {
 protected:
  void Link(const Text& target, const Text& name) const { std::filesystem::create_symlink(target, folder_.Path(name)); }
  [[nodiscard]] FileKind KindOf(const Text& name) const { return LookAt(folder_.Path(name)).kind; }

  testing::TempFolder folder_;
};

TEST_F(FileKindTest, TellsFilesFoldersPipesAndSocketsAlsoBehindLinks) {
  folder_.Write("file", "x");
  std::filesystem::create_directory(folder_.Path("folder"));
  ASSERT_EQ(::mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
  const int end = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  folder_.Path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(end, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  for (const auto& [name, kind] : {std::pair("file", FileKind::kRegular), std::pair("folder", FileKind::kFolder),
                                   std::pair("pipe", FileKind::kPipe), std::pair("socket", FileKind::kSocket)}) {
    EXPECT_EQ(KindOf(name), kind) << name;
    Link(name, Text("link to ") + name);
    EXPECT_EQ(KindOf(Text("link to ") + name), kind) << name;
  }
  ::close(end);
}

TEST_F(FileKindTest, TellsADevice) {
  Link("/dev/null", "null");
  EXPECT_EQ(KindOf("null"), FileKind::kDevice);
  EXPECT_THAT([&] { NeedRegularFile(folder_.Path("null")); },
              FailsWith(FailureNumber::kPathOrAccess, "null is a device; a file is wanted"));
}

TEST_F(FileKindTest, LetsAFileAndAMissingOnePass) {
  folder_.Write("file", "x");
  NeedRegularFile(folder_.Path("file"));
  NeedRegularFile(folder_.Path("missing"));
  NeedRegularFile(folder_.Path("missing/file"));
  EXPECT_EQ(KindOf("file/below"), FileKind::kMissing);
}

TEST_F(FileKindTest, KnowsOneFileUnderTwoNames) {
  folder_.Write("file", "x");
  folder_.Write("other", "x");
  std::filesystem::create_hard_link(folder_.Path("file"), folder_.Path("second"));
  Link("second", "link");
  EXPECT_EQ(LookAt(folder_.Path("file")).identity, LookAt(folder_.Path("link")).identity);
  EXPECT_EQ(LookAt(folder_.Path("link")).names, 2U);
  EXPECT_NE(LookAt(folder_.Path("file")).identity, LookAt(folder_.Path("other")).identity);
}

TEST_F(FileKindTest, RefusesLinksInACircle) {
  Link("b", "a");
  Link("a", "b");
  EXPECT_THAT([&] { (void)KindOf("a"); }, FailsWith(FailureNumber::kPathOrAccess, "cannot be looked at"));
}

TEST_F(FileKindTest, FollowsLinksToAFileThatIsNotThereYet) {
  std::filesystem::create_directory(folder_.Path("folder"));
  Link("folder/file", "link");
  Link("link", "link to the link");
  const Text folder = std::filesystem::canonical(folder_.Path("folder")).string();
  EXPECT_EQ(ResolveLinks(folder_.Path("link to the link")), folder + "/file");
  EXPECT_EQ(ResolveLinks(folder_.Path("folder/file")), folder + "/file");
  EXPECT_EQ(ResolveLinks(folder_.Path("no folder/file")), folder_.Path("no folder/file"));
}

}  // namespace
}  // namespace tallybook::application
