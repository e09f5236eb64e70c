// The reader of a definition file, and the conversion of an older one.
#include "exchange/DefinitionFile.h"
#include "fuzz/FuzzHost.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tallybook;
  fuzz::FuzzHost host;
  const Text path = "/book/TBQDX1.NORTH";
  host.files.Put(path, std::string(fuzz::AsBytes(data, size)));
  for (const TablesWanted tables : {TablesWanted::kRead, TablesWanted::kSkip}) {
    DefinitionRecord record;
    (void)ReadDefinition(path, tables, record, [&] { record = {}; });
  }
  // What converts can be read: the newer form is the older one with more in it.
  DefinitionRecord converted;
  if (ConvertDefinition(path, "/book/TBQDX2.NORTH") == Conversion::kDone) {
    (void)ReadDefinition("/book/TBQDX2.NORTH", TablesWanted::kRead, converted, [] {});
  }
  return 0;
}
