#include <gtest/gtest.h>
#include <string_view>
#include <vector>

#include "tallybook/engine/Checksums.h"

namespace tallybook::testing {
namespace {

using engine::AppendChecksum;
using engine::ChecksumOf;
using engine::Digest;
using engine::kChecksumSize;
using engine::TakeChecked;

std::vector<std::byte> Bytes(std::string_view text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

// XXH3 of 64 bits with the key as its seed: what other programs that read a book will count with. The value for no
// bytes and no seed is the algorithm's published one.
TEST(Checksums, AreThoseOfThePublishedAlgorithm) {
  EXPECT_EQ(ChecksumOf({}, 0), 0x2D06800538D394C2U);
}

TEST(Checksums, AreGivenBackWithTheBytesBeforeThem) {
  std::vector<std::byte> bytes = Bytes("figures");
  const auto checksum = AppendChecksum(bytes, 5);
  EXPECT_EQ(bytes.size(), 7 + kChecksumSize);
  const auto taken = TakeChecked(bytes, 5);
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->checksum, checksum);
  EXPECT_EQ(std::vector<std::byte>(taken->bytes.begin(), taken->bytes.end()), Bytes("figures"));
}

TEST(Checksums, HoldForOneKeyAndForNoBitFlipped) {
  std::vector<std::byte> bytes = Bytes("figures");
  AppendChecksum(bytes, 5);
  EXPECT_FALSE(TakeChecked(bytes, 6));
  for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
    bytes[bit / 8] ^= std::byte{1} << (bit % 8);
    EXPECT_FALSE(TakeChecked(bytes, 5)) << bit;
    bytes[bit / 8] ^= std::byte{1} << (bit % 8);
  }
  for (std::size_t size = 0; size < bytes.size(); ++size) EXPECT_FALSE(TakeChecked(std::span(bytes).first(size), 5));
}

TEST(Digest, KeepsItemsApart) {
  EXPECT_NE(Digest().Add(Text("ab")).Add(Text("c")).Value(), Digest().Add(Text("a")).Add(Text("bc")).Value());
  EXPECT_NE(Digest().Add(1.0).Value(), Digest().Add(std::int64_t{1}).Value());
  EXPECT_EQ(Digest().Add(Text("ab")).Value(), Digest().Add(Text("ab")).Value());
}

}  // namespace
}  // namespace tallybook::testing
