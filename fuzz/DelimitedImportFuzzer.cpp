// The delimited import. The first byte of the input chooses how: two bits for the way of combining, two for the order
// of the date, one for a date in one field, one for fields that the system keeps. What follows is the file.
#include "fuzz/FuzzHost.h"
#include "import/DelimitedImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tallybook;
  if (size == 0) return 0;
  const unsigned choice = data[0];
  fuzz::FuzzHost host;
  host.files.Put(fuzz::kFile, std::string(fuzz::AsBytes(data + 1, size - 1)));
  const DelimitedImportRequest request{.file_name = fuzz::kFile,
                                       .math = static_cast<eMath>(choice % 4),
                                       .date_order = static_cast<Integer>((choice / 4) % 4),
                                       .date_fields = static_cast<Integer>((choice / 16) % 2),
                                       .can_import_system_fields = (choice & 32U) != 0};
  TextImportTally tally;
  static_cast<void>(ImportDelimited(host.book, request, tally));
  return 0;
}
