// The reader of an exchange file's header, with and without its tables.
#include "fuzz/FuzzHost.h"
#include "qdx/HeaderReader.h"
#include "support/Utility.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tallybook;
  fuzz::FuzzHost host;
  host.files.Put(fuzz::kFile, std::string(fuzz::AsBytes(data, size)));
  for (const bool header_only : {true, false}) {
    Integer file_number = 0;
    if (MyReadQDXHeader(host.book, fuzz::kFile, file_number, header_only, SharedHeader())) {
      (void)DescribeHeader(SharedHeader(), fuzz::kFile);
    }
    CloseFileEx(file_number);
  }
  return 0;
}
