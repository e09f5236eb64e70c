// A disk that fills up: at some moment the row or the close must fail, and a file that is not whole is never called
// whole.
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/tables/TableTest.h"

namespace tallybook::tables {
namespace {

using testing::FileCall;
using testing::FileSizeLimit;

class FullDiskTest : public TableTest, public ::testing::WithParamInterface<const char*> {
 protected:
  // Writes rows until one fails or there are enough; gives what failed, 0 for nothing.
  Long WriteUntilFailure(int rows) {
    SetDay(2004, 2, 3);
    for (int row = 0; row < rows; ++row) {
      SetAccount(std::to_string(100 + row % 900));
      SetValue(static_cast<Integer>(row % 999 + 1), row * 1.001);
      const Long result = library_.CommitRow(table_);
      if (result != kRowCommitted) return result;
    }
    return 0;
  }

  // A limit on a file's size is not told from a broken device by SQLite at its commit, as a full disk is.
  void ExpectCloseFails() {
    try {
      Close();
      FAIL() << "a file that is not whole was called whole";
    } catch (const Failure& failure) {
      EXPECT_THAT(failure.Number(), ::testing::AnyOf(FailureNumber::kDiskFull, FailureNumber::kDeviceError));
      EXPECT_THAT(failure.Description(), ::testing::HasSubstr(folder_.Path("out")));
    }
  }

  // Writes a table from beginning to end; false where anything was told.
  bool WritesAThousandRows() {
    dated_ = library_.FormatFlags(GetParam()) != 0;
    Long table = 0;
    if (!library_.CreateTable(folder_.Path("out"), GetParam(), "Table1", dated_ ? 4 : 6, table)) return false;
    table_ = table;
    AddColumns();
    const bool written = WriteUntilFailure(1'000) == 0;
    try {
      Close();
    } catch (const Failure&) {
      EXPECT_TRUE(written) << "told twice";
      return false;
    }
    return written;
  }
};

TEST_P(FullDiskTest, ManyRowsEndInDiskFullAndNeverInSilence) {
  const FileSizeLimit limit(20'000);
  Create(GetParam(), folder_.Path("out"));
  const Long result = WriteUntilFailure(200'000);
  if (result == 0) {
    ExpectCloseFails();
    return;
  }
  EXPECT_EQ(result, static_cast<Long>(FailureNumber::kDiskFull)) << library_.LastError();
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr(folder_.Path("out") + ": row "));
  EXPECT_NO_THROW(Close()) << "the reason has been told";
}

TEST_P(FullDiskTest, FewRowsFailAtTheClose) {
  Create(GetParam(), folder_.Path("out"));
  const FileSizeLimit limit(16);
  ASSERT_EQ(WriteUntilFailure(3), 0);
  ExpectCloseFails();
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr(folder_.Path("out")));
}

// The disk is full at one size after the other, up to the size of the whole file: what is not whole has been told.
TEST_P(FullDiskTest, IsWholeOrToldAtEverySizeOfTheDisk) {
  Create(GetParam(), folder_.Path("whole"));
  ASSERT_EQ(WriteUntilFailure(1'000), 0);
  Close();
  const std::string whole = folder_.Read("whole");
  int told = 0;
  bool done = false;
  for (std::size_t size = 512; !done; size += 2048) {
    ASSERT_LT(size, 10 * whole.size() + 200'000) << "no disk was large enough: " << library_.LastError();
    const FileSizeLimit limit(size);
    done = WritesAThousandRows();
    if (done) {
      EXPECT_EQ(folder_.Read("out"), whole) << "called whole on a disk of " << size << " bytes";
    } else {
      ++told;
    }
  }
  EXPECT_GT(told, 0);
}

// The platform's writes and the close fail one after the other until a run passes.
TEST_P(FullDiskTest, TellsEachFailureOfTheFileOnce) {
  for (const FileCall call : {FileCall::kOpen, FileCall::kWrite, FileCall::kClose}) {
    bool done = false;
    for (int nth = 1; !done; ++nth) {
      ASSERT_LT(nth, 1000);
      platform_.files.ClearFaults();
      const int before = platform_.files.FaultsRaised();
      platform_.files.FailNth(call, nth, FailureNumber::kDeviceError);
      done = WritesAThousandRows();
      EXPECT_EQ(done, platform_.files.FaultsRaised() == before) << "call " << nth << ": " << library_.LastError();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, FullDiskTest, ::testing::Values("CSV", "XLSX", "DBF", "TXT", "SQLT"),
                         [](const auto& format) { return Text(format.param); });

}  // namespace
}  // namespace tallybook::tables
