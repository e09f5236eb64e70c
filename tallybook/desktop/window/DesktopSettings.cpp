#include "tallybook/desktop/window/DesktopSettings.h"

#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/application/ReferenceApp.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kWindow = "Window";
constexpr const char* kRecent = "Recent";

// A section's name cannot hold a bracket, and a path can.
Text SectionOf(const Text& book) {
  Text section = "Book " + book;
  std::ranges::replace(section, ']', ')');
  std::ranges::replace(section, '\n', ' ');
  return section;
}

Integer NumberIn(const Text& text, Integer otherwise) {
  const Double number = LeadingNumber(text);
  return number >= -1 && number <= 32'767 && !text.empty() ? static_cast<Integer>(number) : otherwise;
}

}  // namespace

DesktopSettings::DesktopSettings(Text path) : path_(std::move(path)) {}

Text DesktopSettings::Read(const Text& section, const Text& key, const Text& otherwise) const {
  try {
    settings::SettingsFile file(path_);
    file.SetSection(section);
    return file.ReadValue(key, otherwise);
  } catch (const Failure&) {
    return otherwise;  // meant: nothing of this keeps anybody from a book
  }
}

void DesktopSettings::Write(const Text& section, const Text& key, const Text& value) {
  try {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ignored);
    settings::SettingsFile file(path_);
    file.SetSection(section);
    if (file.ReadValue(key, "\n") != value) file.WriteValue(key, value);
  } catch (const Failure&) {
    return;  // meant, as above
  }
}

std::vector<Text> DesktopSettings::RecentBooks() const {
  std::vector<Text> books;
  for (std::size_t number = 1; number <= kMostRecent; ++number) {
    Text book = Read(kRecent, "Book" + std::to_string(number), "");
    if (!book.empty()) books.push_back(std::move(book));
  }
  return books;
}

void DesktopSettings::WriteRecent(const std::vector<Text>& books) {
  for (std::size_t number = 1; number <= kMostRecent; ++number) {
    Write(kRecent, "Book" + std::to_string(number), number <= books.size() ? books[number - 1] : "");
  }
}

void DesktopSettings::NoteBook(const Text& path) {
  std::vector<Text> books = RecentBooks();
  std::erase(books, path);
  books.insert(books.begin(), path);
  if (books.size() > kMostRecent) books.resize(kMostRecent);
  WriteRecent(books);
}

void DesktopSettings::ForgetBook(const Text& path) {
  std::vector<Text> books = RecentBooks();
  std::erase(books, path);
  WriteRecent(books);
}

BookLook DesktopSettings::LookOf(const Text& book) const {
  const Text section = SectionOf(book);
  const auto number = [&](const Text& key, Integer otherwise) { return NumberIn(Read(section, key, ""), otherwise); };
  BookLook look;
  look.choice.view = static_cast<FigureView>(std::clamp<Integer>(number("View", 0), 0, 2));
  look.choice.level = number("Level", kOwnLevel);
  look.choice.stretch = number("Stretch", kPeriodLevel);
  look.choice.account = number("Account", 1);
  look.choice.field = number("Field", 1);
  look.choice.date = LeadingNumber(Read(section, "Date", "0"));
  look.sizes = Read(section, "Sizes", "");
  look.chart = number("Chart", 1) != 0;
  look.against_year_before = number("YearBefore", 1) != 0;
  return look;
}

void DesktopSettings::KeepLook(const Text& book, const BookLook& look) {
  const Text section = SectionOf(book);
  const auto keep = [&](const Text& key, long long value) { Write(section, key, std::to_string(value)); };
  keep("View", static_cast<long long>(look.choice.view));
  keep("Level", look.choice.level);
  keep("Stretch", look.choice.stretch);
  keep("Account", look.choice.account);
  keep("Field", look.choice.field);
  keep("Date", static_cast<long long>(look.choice.date));
  keep("Chart", look.chart ? 1 : 0);
  keep("YearBefore", look.against_year_before ? 1 : 0);
  Write(section, "Sizes", look.sizes);
}

Text DesktopSettings::Value(const Text& key, const Text& otherwise) const {
  return Read(kWindow, key, otherwise);
}

void DesktopSettings::SetValue(const Text& key, const Text& value) {
  Write(kWindow, key, value);
}

Text DocumentsFolder() {
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  return (QDir(documents).exists() ? documents : QDir::homePath()).toStdString();
}

Text DesktopSettingsPath() {
  return application::UserStateFolder() + "/books.ini";
}

}  // namespace tallybook::desktop
