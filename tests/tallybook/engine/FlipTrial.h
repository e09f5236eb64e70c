// Single bits are flipped in a closed book. Whatever is read then is refused, or is as it was.
#pragma once

#include <random>
#include <string>

#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {

class FlipTrial : public BookFixture {
 protected:
  // Chunks of each form, images, and entries of the journal.
  void SetUp() override {
    engine::BookDescription description = ShopDescription();
    for (Integer number = 20; number < 60; ++number) description.fields.push_back({number, "", false});
    description.accounts.push_back({300, "300", ""});
    const auto book = CreateAndOpen(description);
    book->SetOperationName("import");
    book->BeginRollback(Day(2003, 1, 1), Day(2003, 12, 31));
    for (int day = 0; day < 200; ++day) {
      Put(*book, 101, Day(2003, 1, 1) + day, 1, day * 0.25);
      Put(*book, 205, Day(2003, 4, 1) + day * 2, static_cast<Integer>(20 + day % 40), day / 7.0);
      for (Integer number = 20; number < 60 && day < 80; ++number) {
        Put(*book, 7, Day(2003, 1, 1) + day, number, (day + 1) * 1000.0 / number);
      }
    }
    book->EndRollback();
    book->BeginRollback(Day(2003, 1, 1), Day(2003, 12, 31));
    for (int day = 10; day < 90; ++day) Put(*book, 101, Day(2003, 1, 1) + day, 4, day);
    book->EndRollback();
    figures_ = FiguresOf(*book);
    book->Close();
    bytes_ = folder.Read("North.tbk");
  }

  // Gives how many of the readings were refused.
  int Flip(int flips, unsigned seed) {
    std::mt19937 random(seed);
    int refused = 0;
    for (int flip = 0; flip < flips; ++flip) {
      const std::size_t bit = random() % (bytes_.size() * 8);
      SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(bit / 8));
      std::string flipped = bytes_;
      flipped[bit / 8] = static_cast<char>(static_cast<unsigned char>(flipped[bit / 8]) ^ (1U << (bit % 8)));
      refused += Refused(flipped, [this] { EXPECT_EQ(FiguresOf(*OpenToRead()), figures_); });
      refused += Refused(flipped, [this] { EXPECT_EQ(EveryRecord(*OpenToRead()), figures_); });
      refused += Refused(flipped, [this] { EXPECT_EQ(EveryRecord(*Open()), figures_); });
      if (HasFailure()) break;
    }
    return refused;
  }

 private:
  template <typename Act>
  int Refused(const std::string& bytes, Act act) {
    folder.Write("North.tbk", bytes);
    for (const char* companion : {"North.tbk-wal", "North.tbk-shm"}) std::remove(folder.Path(companion).c_str());
    try {
      act();
      return 0;
    } catch (const Failure&) {
      return 1;
    }
  }

  static FigureMap EveryRecord(engine::Book& book) {
    FigureMap figures;
    // The newest dates first, so that no walk over rising keys hides a search that goes astray.
    for (Date day = book.LastDate(); day >= book.FirstDate(); --day) {
      for (const auto& account : book.Description().accounts) {
        EXPECT_TRUE(book.ReadRecord(account.number, day));
        for (const auto& field : book.Description().fields) {
          const Double value = book.FieldValue(field.number);
          if (value != 0) figures[{account.number, day, field.number}] = value;
        }
      }
    }
    return figures;
  }

  FigureMap figures_;
  std::string bytes_;
};

}  // namespace tallybook::testing
