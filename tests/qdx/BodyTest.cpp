#include <limits>

#include "qdx/Body.h"
#include "tests/qdx/ExchangeBytes.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

constexpr const char* kPath = "/q/BODY.QDX";

class BodyTest : public ::testing::Test {
 protected:
  std::unique_ptr<FileStream> Open() {
    return std::make_unique<FileStream>(
        platform.memory.Open(kPath, Access::kReadWrite, Sharing::kLockReadWrite, Creation::kCreateIfMissing));
  }
  std::unique_ptr<FileStream> OpenHolding(const std::string& bytes) {
    platform.memory.Put(kPath, bytes);
    return Open();
  }
  [[nodiscard]] std::string Written() const { return platform.memory.Bytes(kPath); }

  ScriptedPlatform platform{FilesIn::kMemory};
};

// The documented example: two accounts, the first with 2.5 in the second field on 3 February 2004.
TEST_F(BodyTest, WritesTheDocumentedExample) {
  const auto stream = Open();
  PutItem(*stream, BodyAccount{1});
  PutItem(*stream, BodyDate{2, 3, 2004});
  PutItem(*stream, BodyCount{1});
  PutItem(*stream, BodyValue{2, 2.5});
  PutBlockEnd(*stream);
  PutItem(*stream, BodyAccount{2});
  PutBlockEnd(*stream);
  PutBodyEnd(*stream);
  stream->Close();

  const std::string expected(
      "\x01\x00\x02\x00\x03\x00\xD4\x07\x01\x00\x02\x00\x00\x00\x00\x00\x00\x00\x04\x40"
      "\x00\x00\x00\x00\x00\x00\x02\x00\x00\x00\x00\x00\x00\x00"
      "\x00\x00\x00\x00\x00\x00\x00\x00",
      42);
  EXPECT_EQ(Written(), expected);
}

TEST_F(BodyTest, WritesManyItemsAsItWritesEach) {
  std::string expected;
  const auto stream = Open();
  // Of sizes that do not go into a buffer evenly, and one that goes into none.
  for (const std::size_t count :
       {std::size_t{0}, std::size_t{1}, std::size_t{700}, std::size_t{999}, std::size_t{30'000}}) {
    for (int round = 0; round < 30; ++round) {
      std::vector<BodyValue> values;
      for (std::size_t i = 0; i < count; ++i) {
        values.push_back({static_cast<Integer>(i % 99), static_cast<Double>(i + 1) / 4});
        expected += Bytes().I2(values.back().field_index).R8(values.back().value).All();
      }
      PutItems(*stream, std::span<const BodyValue>(values));
    }
  }
  stream->Close();
  EXPECT_TRUE(Written() == expected);
}

TEST_F(BodyTest, TakesAsManyBytesAsTheFormatSays) {
  EXPECT_EQ(BytesOf<BodyAccount>(), 2U);
  EXPECT_EQ(BytesOf<BodyDate>(), 6U);
  EXPECT_EQ(BytesOf<BodyBlockStart>(), 8U);
  EXPECT_EQ(BytesOf<BodyCount>(), 2U);
  EXPECT_EQ(BytesOf<BodyValue>(), 10U);
}

TEST_F(BodyTest, ReadsEachItemInFileOrder) {
  const auto stream = OpenHolding(Bytes().I2s({7, 2, 3, 2004, 1, -2}).R8(-0.125).All());
  BodyBlockStart start;
  BodyCount count;
  BodyValue value;
  EXPECT_TRUE(GetItem(*stream, start));
  EXPECT_TRUE(GetItem(*stream, count));
  EXPECT_TRUE(GetItem(*stream, value));
  EXPECT_EQ(start.account.account_index, 7);
  EXPECT_EQ(start.date.month, 2);
  EXPECT_EQ(start.date.day, 3);
  EXPECT_EQ(start.date.year, 2004);
  EXPECT_EQ(count.values, 1);
  EXPECT_EQ(value.field_index, -2);
  EXPECT_EQ(value.value, -0.125);
  EXPECT_TRUE(stream->AtEnd());
}

TEST_F(BodyTest, KeepsEveryDoubleBitByBit) {
  for (const Double figure : {2.5, -2.5, 5e-324, -5e-324, 1e308, std::numeric_limits<Double>::infinity(),
                              std::numeric_limits<Double>::quiet_NaN()}) {
    const auto stream = OpenHolding("");
    PutItem(*stream, BodyValue{1, figure});
    stream->Seek(0);
    BodyValue read;
    ASSERT_TRUE(GetItem(*stream, read));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read.value), std::bit_cast<std::uint64_t>(figure)) << figure;
  }
}

TEST_F(BodyTest, LeavesAnItemThatIsNotWholeAsItWasAndStandsAtTheEnd) {
  const std::string whole = Bytes().I2s({7, 2, 3, 2004}).All();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto stream = OpenHolding(whole.substr(0, length));
    BodyBlockStart start{{5}, {9, 8, 1999}};
    EXPECT_FALSE(GetItem(*stream, start)) << length;
    EXPECT_EQ(start.account.account_index, 5) << length;
    EXPECT_EQ(start.date.month, 9) << length;
    EXPECT_EQ(start.date.day, 8) << length;
    EXPECT_EQ(start.date.year, 1999) << length;
    EXPECT_EQ(stream->Position(), static_cast<long long>(length));
    EXPECT_TRUE(stream->AtEnd());
  }
}

TEST_F(BodyTest, RaisesWhatAReadRaisesAndCanReadAgainAfterwards) {
  platform.memory.Put(kPath, Bytes().I2s({3, 4}).All());
  FileStream stream(platform.files.Open(kPath, Access::kRead, Sharing::kShared, Creation::kMustExist));
  platform.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  BodyCount count{9};
  EXPECT_THAT([&] { static_cast<void>(GetItem(stream, count)); }, FailsWith(FailureNumber::kDeviceError));
  EXPECT_EQ(count.values, 9);
  EXPECT_EQ(stream.Position(), 0);
  ASSERT_TRUE(GetItem(stream, count));
  EXPECT_EQ(count.values, 3);
}

}  // namespace
}  // namespace tallybook::testing
