#include "tallybook/application/PreviewOutcome.h"

#include <sstream>

#include "tallybook/application/StandardStreams.h"

namespace tallybook::application {

namespace {

// The files that the engine began stand in the preview in the order of the run; one that it could not read has none.
class FilesInOrder {
 public:
  explicit FilesInOrder(const std::vector<preview::PreviewedFile>& files) : files_(files) {}

  void Take(PreviewedImport& import) {
    if (next_ >= files_.size() || files_[next_].name != import.file) return;
    import.figures = files_[next_].figures;
    import.records = files_[next_].records;
    ++next_;
  }

 private:
  const std::vector<preview::PreviewedFile>& files_;
  std::size_t next_ = 0;
};

// What standard input stands for is nobody's file.
preview::FileFate FateOf(const Text& file, const preview::ImportPreview& preview) {
  return file == kStandardStream ? preview::FileFate{} : preview.FateOf(file);
}

}  // namespace

std::vector<PreviewedImport> ImportsOf(const QDXImportRecord& record, const preview::ImportPreview& preview) {
  std::vector<PreviewedImport> imports;
  FilesInOrder files(preview.Files());
  for (const QDXDefinitionImport& definition : record.definitions) {
    for (const QDXFileImport& file : definition.files) {
      PreviewedImport& import = imports.emplace_back(PreviewedImport{.file = file.file, .imported = file.stored});
      files.Take(import);
      import.fate = FateOf(file.file, preview);
      if (file.stays) import.reason = file.stays->words;
      if (!file.stored && definition.stop) import.reason = definition.stop->words;
    }
    for (const Text& file : definition.not_begun) {
      imports.push_back({.file = file, .reason = "the run stops before it"});
    }
  }
  return imports;
}

PreviewedImport ImportOf(const Text& file, const TextImportTally& tally, const preview::ImportPreview& preview) {
  PreviewedImport import{.file = file, .imported = tally.stored};
  FilesInOrder(preview.Files()).Take(import);
  import.fate = FateOf(file, preview);
  if (tally.stays) import.reason = tally.stays->words;
  if (!tally.stored && tally.stop) import.reason = tally.stop->words;
  return import;
}

Text FateText(const preview::FileFate& fate) {
  switch (fate.kind) {
    case preview::FileFate::Kind::kKept:
      return "kept";
    case preview::FileFate::Kind::kDeleted:
      return "deleted";
    case preview::FileFate::Kind::kRenamed:
      break;
  }
  return "renamed to " + fate.new_path + (fate.replaces ? ", in place of an older file" : "");
}

std::vector<Text> LinesOf(const Text& text) {
  std::vector<Text> lines;
  std::istringstream stream(text);
  for (Text line; std::getline(stream, line);) lines.push_back(line);
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

}  // namespace tallybook::application
