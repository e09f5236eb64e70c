// The buffered stream against a plain vector with a position, on good files and on files that fail.
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>

#include "support/FileStream.h"
#include "tests/support/FailsWith.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/MemoryFileSystem.h"

namespace tallybook::testing {
namespace {

constexpr const char* kPath = "/stream";
constexpr std::size_t kBufferSize = 64 * 1024;

std::string Pattern(std::size_t size, unsigned seed) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 31 + i / 251 + seed * 7) & 0xFF);
  return bytes;
}

std::span<const std::byte> BytesOf(const std::string& text) {
  return std::as_bytes(std::span(text));
}

// What a stream is: bytes and a position.
struct Model {
  std::string bytes;
  std::size_t position = 0;

  [[nodiscard]] std::size_t Left() const { return bytes.size() - std::min(position, bytes.size()); }
  std::string Read(std::size_t size) {
    const std::string read = bytes.substr(position, size);
    position += size;
    return read;
  }
  void Write(const std::string& text) {
    if (text.empty()) return;
    if (bytes.size() < position + text.size()) bytes.resize(position + text.size(), '\0');
    bytes.replace(position, text.size(), text);
    position += text.size();
  }
};

class StreamFiles {
 public:
  explicit StreamFiles(const std::string& bytes) : faults(memory) { memory.Put(kPath, bytes); }

  FileStream Open() {
    return FileStream(faults.Open(kPath, Access::kReadWrite, Sharing::kShared, Creation::kMustExist));
  }

  MemoryFileSystem memory;
  FaultyFileSystem faults;
};

enum class Deed { kReadWhole, kReadSome, kWrite, kTake, kClaim, kSeek, kFlush, kSize, kAtEnd };
constexpr int kDeeds = 9;

struct Step {
  Deed deed = Deed::kReadWhole;
  std::size_t size = 0;  // of what is read or written; the place to seek
};

std::ostream& operator<<(std::ostream& out, const Step& step) {
  return out << "deed " << static_cast<int>(step.deed) << " of " << step.size;
}

// Sizes around nothing, around the buffer's and far beyond it.
rc::Gen<std::size_t> AnySize() {
  return rc::gen::weightedOneOf<std::size_t>({{6, rc::gen::inRange<std::size_t>(0, 64)},
                                              {2, rc::gen::inRange<std::size_t>(kBufferSize - 3, kBufferSize + 4)},
                                              {2, rc::gen::inRange<std::size_t>(64, 3 * kBufferSize)}});
}

rc::Gen<std::vector<Step>> AnySteps() {
  const auto step = rc::gen::build<Step>(
      rc::gen::set(&Step::deed, rc::gen::map(rc::gen::inRange(0, kDeeds), [](int n) { return static_cast<Deed>(n); })),
      rc::gen::set(&Step::size, AnySize()));
  return rc::gen::container<std::vector<Step>>(step);
}

// Does steps on a stream and on the model and compares what each gives. A step that fails is done again until it
// passes: the model knows of no failures.
class Comparison {
 public:
  Comparison(FileStream& stream, Model& model) : stream_(stream), model_(model) {}

  void Do(const Step& step) {
    switch (step.deed) {
      case Deed::kReadWhole:
        return ReadWhole(step.size);
      case Deed::kReadSome:
        return ReadSome(step.size);
      case Deed::kWrite:
        return Write(step.size);
      case Deed::kTake:
        return Take(step.size);
      case Deed::kClaim:
        return Claim(step.size);
      case Deed::kSeek:
        Repeat([&] { stream_.Seek(static_cast<long long>(step.size)); });
        model_.position = step.size;
        return;
      case Deed::kFlush:
        return Repeat([&] { stream_.Flush(); });
      case Deed::kSize:
        RC_ASSERT(Repeated<long long>([&] { return stream_.Size(); }) == static_cast<long long>(model_.bytes.size()));
        return;
      case Deed::kAtEnd:
        RC_ASSERT(Repeated<bool>([&] { return stream_.AtEnd(); }) == (model_.Left() == 0));
        return;
    }
  }
  void ComparePositions() { RC_ASSERT(stream_.Position() == static_cast<long long>(model_.position)); }

 private:
  // A failure must leave the position where it was.
  template <typename Result, typename Act>
  Result Repeated(Act act) {
    for (;;) {
      const long long before = stream_.Position();
      try {
        return act();
      } catch (const Failure&) {
        RC_ASSERT(stream_.Position() == before);
      }
    }
  }
  template <typename Act>
  void Repeat(Act act) {
    (void)Repeated<bool>([&] {
      act();
      return true;
    });
  }

  void ReadWhole(std::size_t size) {
    const std::string before(size, '?');
    std::string into;
    const bool whole = Repeated<bool>([&] {
      into = before;
      return stream_.ReadWhole(std::as_writable_bytes(std::span(into)));
    });
    RC_ASSERT(whole == (size == 0 || size <= model_.Left()));
    if (whole) {
      RC_ASSERT(into == (size == 0 ? "" : model_.Read(size)));
    } else {
      RC_ASSERT(into == before);
      model_.position = model_.bytes.size();
    }
  }
  // How much comes at once is the stream's matter; nothing comes at the end alone.
  void ReadSome(std::size_t size) {
    std::string into(size, '?');
    const auto count = Repeated<std::size_t>([&] { return stream_.ReadSome(std::as_writable_bytes(std::span(into))); });
    RC_ASSERT(count <= std::min(size, model_.Left()));
    RC_ASSERT((count == 0) == (size == 0 || model_.Left() == 0));
    if (count > 0) RC_ASSERT(into.substr(0, count) == model_.Read(count));
  }
  void Write(std::size_t size) {
    const std::string text = Pattern(size, ++seed_);
    Repeat([&] { stream_.Write(BytesOf(text)); });
    model_.Write(text);
  }
  void Take(std::size_t size) {
    const std::byte* const taken = stream_.Take(size);
    if (taken == nullptr || size == 0) return;
    RC_ASSERT(size <= model_.Left());
    RC_ASSERT(std::string(reinterpret_cast<const char*>(taken), size) == model_.Read(size));
  }
  void Claim(std::size_t size) {
    std::byte* const claimed = stream_.Claim(size);
    if (claimed == nullptr) return;
    const std::string text = Pattern(size, ++seed_);
    std::copy_n(BytesOf(text).begin(), size, claimed);
    model_.Write(text);
  }

  FileStream& stream_;
  Model& model_;
  unsigned seed_ = 0;
};

RC_GTEST_PROP(FileStreamTest, IsBytesAndAPositionWhateverIsDone, ()) {
  const std::string start = Pattern(*AnySize(), 0);
  StreamFiles files(start);
  Model model{start};
  {
    FileStream stream = files.Open();
    Comparison comparison(stream, model);
    for (const Step& step : *AnySteps()) {
      comparison.Do(step);
      comparison.ComparePositions();
    }
    stream.Close();
  }
  RC_ASSERT(files.memory.Bytes(kPath) == model.bytes);
}

RC_GTEST_PROP(FileStreamTest, FailuresThatAreRepeatedNeitherLoseNorDoubleAByte, ()) {
  const std::string start = Pattern(*AnySize(), 0);
  StreamFiles files(start);
  Model model{start};
  FileStream stream = files.Open();
  for (const FileCall call : {FileCall::kRead, FileCall::kWrite, FileCall::kSize})
    for (const int nth : *rc::gen::container<std::vector<int>>(rc::gen::inRange(1, 12)))
      files.faults.FailNth(call, nth, FailureNumber::kDeviceError);
  Comparison comparison(stream, model);
  for (const Step& step : *AnySteps()) {
    comparison.Do(step);
    comparison.ComparePositions();
  }
  files.faults.ClearFaults();
  stream.Close();
  RC_ASSERT(files.memory.Bytes(kPath) == model.bytes);
}

// --- One matter each -------------------------------------------------------------------------------------------------

std::string ReadText(FileStream& stream, std::size_t size) {
  std::string into(size, '?');
  return stream.ReadWhole(std::as_writable_bytes(std::span(into))) ? into : "cut short";
}

TEST(FileStreamTest, ReadThatRunsPastTheEndLeavesTheTargetAndStandsAtTheEnd) {
  StreamFiles files("abcde");
  FileStream stream = files.Open();
  stream.Seek(3);
  std::string into = "???";
  EXPECT_FALSE(stream.ReadWhole(std::as_writable_bytes(std::span(into))));
  EXPECT_EQ(into, "???");
  EXPECT_EQ(stream.Position(), 5);
  EXPECT_TRUE(stream.AtEnd());
}

TEST(FileStreamTest, ReadFromBehindTheEndComesBackToTheEnd) {
  StreamFiles files("abcde");
  FileStream stream = files.Open();
  stream.Seek(100);
  EXPECT_TRUE(stream.AtEnd());
  EXPECT_EQ(ReadText(stream, 1), "cut short");
  EXPECT_EQ(stream.Position(), 5);
}

TEST(FileStreamTest, TakeGivesWhatTheBufferHoldsInPlace) {
  StreamFiles files("abcdef");
  FileStream stream = files.Open();
  EXPECT_EQ(stream.Take(2), nullptr);  // nothing is buffered before the first read
  EXPECT_EQ(ReadText(stream, 1), "a");
  const std::byte* const taken = stream.Take(3);
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(taken), 3), "bcd");
  EXPECT_EQ(stream.Position(), 4);
  EXPECT_EQ(stream.Take(3), nullptr);
  EXPECT_EQ(stream.Position(), 4);
  EXPECT_EQ(ReadText(stream, 2), "ef");
}

TEST(FileStreamTest, ClaimGivesRoomThatCountsAsWritten) {
  StreamFiles files("abcdef");
  FileStream stream = files.Open();
  EXPECT_EQ(stream.Claim(2), nullptr);  // a stream begins as one that is read
  stream.Write(BytesOf("X"));
  std::byte* const claimed = stream.Claim(2);
  ASSERT_NE(claimed, nullptr);
  claimed[0] = std::byte{'Y'};
  claimed[1] = std::byte{'Z'};
  EXPECT_EQ(stream.Position(), 3);
  EXPECT_EQ(stream.Claim(kBufferSize), nullptr);
  EXPECT_EQ(stream.Position(), 3);
  stream.Close();
  EXPECT_EQ(files.memory.Bytes(kPath), "XYZdef");
}

TEST(FileStreamTest, SizeCountsWhatIsStillUnwritten) {
  StreamFiles files("abc");
  FileStream stream = files.Open();
  stream.Seek(2);
  stream.Write(BytesOf("12345"));
  EXPECT_EQ(stream.Size(), 7);
  EXPECT_EQ(files.memory.Bytes(kPath), "abc");
  stream.Flush();
  EXPECT_EQ(files.memory.Bytes(kPath), "ab12345");
}

TEST(FileStreamTest, HasNoByteBeforeTheFirst) {
  StreamFiles files("abc");
  FileStream stream = files.Open();
  stream.Seek(2);
  EXPECT_THAT([&] { stream.Seek(-1); }, FailsWith(FailureNumber::kInvalidArgument, "-1"));
  EXPECT_EQ(stream.Position(), 2);
}

TEST(FileStreamTest, EndWithoutCloseDropsWhatIsUnwritten) {
  StreamFiles files("abc");
  {
    FileStream stream = files.Open();
    stream.Write(BytesOf("X"));
  }
  EXPECT_EQ(files.memory.Bytes(kPath), "abc");
  EXPECT_EQ(files.memory.OpenHandles(), 0);
}

TEST(FileStreamTest, ClosingTwiceClosesOnce) {
  StreamFiles files("abc");
  FileStream stream = files.Open();
  stream.Write(BytesOf("X"));
  stream.Close();
  stream.Close();
  EXPECT_EQ(files.faults.Calls(FileCall::kClose), 1);
  EXPECT_EQ(files.memory.Bytes(kPath), "Xbc");
}

TEST(FileStreamTest, CloseThatCannotWriteFailsAndClosesAllTheSame) {
  StreamFiles files("abc");
  FileStream stream = files.Open();
  stream.Write(BytesOf("XY"));
  files.faults.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
  EXPECT_THAT([&] { stream.Close(); }, FailsWith(FailureNumber::kDiskFull));
  EXPECT_EQ(files.memory.OpenHandles(), 0);
  EXPECT_NO_THROW(stream.Close());
}

TEST(FileStreamTest, CloseTellsWhatOnlyTheCloseFindsOut) {
  StreamFiles files("abc");
  FileStream stream = files.Open();
  files.faults.FailNth(FileCall::kClose, 1, FailureNumber::kDiskFull);
  EXPECT_THAT([&] { stream.Close(); }, FailsWith(FailureNumber::kDiskFull));
  EXPECT_EQ(files.memory.OpenHandles(), 0);
}

TEST(FileStreamTest, WriteThatFailsIsThereAfterTheNextFlush) {
  StreamFiles files("");
  FileStream stream = files.Open();
  const std::string text = Pattern(1000, 1);
  stream.Write(BytesOf(text));
  files.faults.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
  EXPECT_THAT([&] { stream.Flush(); }, FailsWith(FailureNumber::kDiskFull));
  EXPECT_EQ(stream.Position(), 1000);
  stream.Flush();
  EXPECT_EQ(files.memory.Bytes(kPath), text);
}

TEST(FileStreamTest, ReadThatFailsGivesTheSameBytesWhenRepeated) {
  StreamFiles files("abcdef");
  FileStream stream = files.Open();
  EXPECT_EQ(ReadText(stream, 2), "ab");
  stream.Seek(100);
  stream.Seek(2);
  files.faults.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_THAT([&] { (void)ReadText(stream, 2); }, FailsWith(FailureNumber::kDeviceError));
  EXPECT_EQ(stream.Position(), 2);
  EXPECT_EQ(ReadText(stream, 2), "cd");
}

}  // namespace
}  // namespace tallybook::testing
