// The comma-separated import. The first byte of the input chooses how: two bits for the way of combining, one for the
// clearing of fields, one for the journal. What follows is the file.
#include "fuzz/FuzzHost.h"
#include "import/CSVImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tallybook;
  if (size == 0) return 0;
  const unsigned choice = data[0];
  fuzz::FuzzHost host;
  host.files.Put(fuzz::kFile, std::string(fuzz::AsBytes(data + 1, size - 1)));
  CSVImportRequest request{.file_name = fuzz::kFile,
                           .no_prompts = false,
                           .math = static_cast<eMath>(choice % 4),
                           .write_rollback = (choice & 8U) != 0};
  if ((choice & 4U) != 0) request.clear_fields = {0, 1, 1};
  TextImportTally tally;
  static_cast<void>(ImportCSV(host.book, request, tally));
  return 0;
}
