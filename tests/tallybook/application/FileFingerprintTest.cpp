#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>

#include "tallybook/application/FileFingerprint.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

// The sums of "abc" are those that the two methods' own descriptions give.
constexpr const char* kXxh3OfAbc = "06b05ab6733a618578af5f94892f3950";
constexpr const char* kSha256OfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

class FileFingerprintTest : public ::testing::Test {
 protected:
  testing::TempFolder folder_;
};

TEST_F(FileFingerprintTest, HasSizeAndBothSums) {
  folder_.Write("abc", "abc");
  const auto print = FingerprintReader(folder_.Path("abc")).Take();
  ASSERT_TRUE(print);
  EXPECT_EQ(print->size, 3);
  EXPECT_EQ(HexText(print->xxh3), kXxh3OfAbc);
  EXPECT_EQ(HexText(print->sha256), kSha256OfAbc);
  EXPECT_EQ(SizeOfFile(folder_.Path("abc")), 3);
}

TEST_F(FileFingerprintTest, ItsFirstSumIsToBeHadAlone) {
  folder_.Write("abc", "abc");
  const auto xxh3 = Xxh3Of(folder_.Path("abc"));
  ASSERT_TRUE(xxh3);
  EXPECT_EQ(HexText(*xxh3), kXxh3OfAbc);
}

TEST_F(FileFingerprintTest, DiffersByAByteInAnyOfManyPieces) {
  std::string bytes(1'000'000, 'x');
  folder_.Write("one", bytes);
  bytes[700'000] = 'y';
  folder_.Write("other", bytes);
  const auto one = FingerprintReader(folder_.Path("one")).Take();
  const auto other = FingerprintReader(folder_.Path("other")).Take();
  ASSERT_TRUE(one && other);
  EXPECT_EQ(one->size, other->size);
  EXPECT_NE(one->xxh3, other->xxh3);
  EXPECT_NE(one->sha256, other->sha256);
}

TEST_F(FileFingerprintTest, IsThatOfTheFileWhichWasOpenedWhateverBecomesOfItsName) {
  folder_.Write("gone", "abc");
  folder_.Write("moved", "abc");
  FingerprintReader gone(folder_.Path("gone"));
  FingerprintReader moved(folder_.Path("moved"));
  std::filesystem::remove(folder_.Path("gone"));
  std::filesystem::rename(folder_.Path("moved"), folder_.Path("elsewhere"));
  folder_.Write("moved", "another");
  EXPECT_EQ(gone.Size(), 3);
  ASSERT_TRUE(gone.Take());
  EXPECT_EQ(HexText(gone.Take()->sha256), kSha256OfAbc);
  EXPECT_EQ(HexText(moved.Take()->xxh3), kXxh3OfAbc);
}

TEST_F(FileFingerprintTest, IsNoneOfWhatIsNoRegularFile) {
  ASSERT_EQ(::mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
  std::filesystem::create_directory(folder_.Path("folder"));
  for (const char* name : {"pipe", "folder", "missing"}) {
    EXPECT_FALSE(Xxh3Of(folder_.Path(name))) << name;
    EXPECT_FALSE(SizeOfFile(folder_.Path(name))) << name;
    FingerprintReader reader(folder_.Path(name));
    EXPECT_FALSE(reader.Size()) << name;
    EXPECT_FALSE(reader.Take()) << name;
  }
}

TEST_F(FileFingerprintTest, EndsItsReadingWithItself) {
  std::filesystem::resize_file((folder_.Write("large", ""), folder_.Path("large")), 50'000'000'000);
  const FingerprintReader reader(folder_.Path("large"));
  EXPECT_EQ(reader.Size(), 50'000'000'000);
}

std::set<Text> ThreadsNow() {
  std::set<Text> threads;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
    threads.insert(entry.path().string());
  return threads;
}

bool Blocks(const Text& thread, int signal) {
  std::ifstream status(thread + "/status");
  for (Text line; std::getline(status, line);) {
    constexpr std::string_view kMask = "SigBlk:";
    if (!line.starts_with(kMask)) continue;
    constexpr int kHex = 16;
    return ((std::stoull(line.substr(kMask.size()), nullptr, kHex) >> static_cast<unsigned>(signal - 1)) & 1U) != 0;
  }
  ADD_FAILURE() << thread << " tells no mask";
  return false;
}

TEST_F(FileFingerprintTest, IsReadByAThreadThatNoSignalComesToAndLeavesTheCallersMaskAlone) {
  std::filesystem::resize_file((folder_.Write("large", ""), folder_.Path("large")), 50'000'000'000);
  const std::set<Text> before = ThreadsNow();
  const FingerprintReader reader(folder_.Path("large"));
  int made = 0;
  for (const Text& thread : ThreadsNow()) {
    if (before.contains(thread)) continue;
    ++made;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGALRM}) EXPECT_TRUE(Blocks(thread, signal)) << signal;
  }
  EXPECT_EQ(made, 1);
  sigset_t mask{};
  ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, nullptr, &mask), 0);
  EXPECT_EQ(sigismember(&mask, SIGINT), 0);
}

}  // namespace
}  // namespace tallybook::application
