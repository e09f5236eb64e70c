// Standard input and output of this very process, put in place of files for a while.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tallybook/application/StandardStreams.h"
#include "tests/support/FailsWith.h"
#include "tests/support/InChild.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using ::testing::HasSubstr;
using testing::InChild;

class StandardStreamsTest : public ::testing::Test {
 protected:
  // Reads `from` as standard input into the file "spooled".
  [[nodiscard]] Text Spool(const Text& from) const {
    return InChild([&] {
      ::dup2(::open(from.c_str(), O_RDONLY), STDIN_FILENO);
      SpoolStandardInput(folder_.Path("spooled"));
    });
  }

  testing::TempFolder folder_;
};

TEST_F(StandardStreamsTest, ReadsTheInputToItsEnd) {
  const std::string bytes(200'000, 'x');
  folder_.Write("input", bytes);
  EXPECT_EQ(Spool(folder_.Path("input")), "done");
  EXPECT_TRUE(folder_.Read("spooled") == bytes);
}

TEST_F(StandardStreamsTest, AnInputThatWasUsedAlreadyIsEmpty) {
  EXPECT_EQ(Spool("/dev/null"), "done");
  EXPECT_EQ(folder_.Read("spooled"), "");
}

TEST_F(StandardStreamsTest, RefusesAFolderAndADeviceWithoutAnEnd) {
  EXPECT_THAT(Spool(folder_.Path()), HasSubstr("standard input is a folder"));
  EXPECT_THAT(Spool("/dev/zero"), HasSubstr("is a device that may have no end"));
  EXPECT_FALSE(folder_.Has("spooled"));
}

TEST_F(StandardStreamsTest, CopiesAFileToStandardOutput) {
  const std::string bytes(200'000, 'y');
  folder_.Write("from", bytes);
  EXPECT_EQ(InChild([&] {
              ::dup2(::open(folder_.Path("to").c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
              CopyToStandardOutput(folder_.Path("from"));
            }),
            "done");
  EXPECT_TRUE(folder_.Read("to") == bytes);
}

TEST_F(StandardStreamsTest, TellsAnOutputThatIsFull) {
  folder_.Write("from", "bytes");
  EXPECT_THAT(InChild([&] {
                ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO);
                CopyToStandardOutput(folder_.Path("from"));
              }),
              HasSubstr("61 standard output cannot be written"));
}

TEST_F(StandardStreamsTest, AStreamThatWasClosedLendsItsNumberToNoFileAndFailsAsBefore) {
  EXPECT_EQ(InChild([&] {
              for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
              HoldClosedStandardStreams();
              char byte = 0;
              if (::read(STDIN_FILENO, &byte, 1) >= 0) throw Failure(FailureNumber::kInternal, "reads");
              if (::write(STDOUT_FILENO, "o", 1) >= 0) throw Failure(FailureNumber::kInternal, "writes output");
              if (::write(STDERR_FILENO, "e", 1) >= 0) throw Failure(FailureNumber::kInternal, "writes errors");
              if (::open(folder_.Path("file").c_str(), O_WRONLY | O_CREAT, 0600) <= STDERR_FILENO)
                throw Failure(FailureNumber::kInternal, "a file has a stream's number");
            }),
            "done");
}

TEST_F(StandardStreamsTest, StreamsThatAreOpenStayAsTheyAre) {
  EXPECT_EQ(InChild([&] {
              ::dup2(::open(folder_.Path("to").c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
              ::close(STDIN_FILENO);
              HoldClosedStandardStreams();
              if (::write(STDOUT_FILENO, "out", 3) != 3) throw Failure(FailureNumber::kInternal, "no output");
            }),
            "done");
  EXPECT_EQ(folder_.Read("to"), "out");
}

TEST_F(StandardStreamsTest, APrivateFolderIsTheUsersAloneAndGoesWithAllItHolds) {
  Text path;
  {
    const PrivateFolder folder;
    path = folder.Path("file");
    std::ofstream(path) << "text";
    struct stat status {};
    ASSERT_EQ(::stat(folder.Path("").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    EXPECT_TRUE(std::filesystem::exists(path));
  }
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

}  // namespace
}  // namespace tallybook::application
